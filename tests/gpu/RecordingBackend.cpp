#include "Backend.h"
#include "gpu/recording/RecordingDevice.h"

namespace veloria::gpu::test {

const Backend& backend() {
  static const Backend recording{"recording", false,
                                 [] {
                                   return std::make_unique<recording::RecordingDevice>(
                                       std::set<std::string>{"k_add", "v_cover", "f_copy", "f_where"});
                                 },
                                 [] { return std::vector<std::byte>(1); }, [] { return std::string(); }};
  return recording;
}

}  // namespace veloria::gpu::test
