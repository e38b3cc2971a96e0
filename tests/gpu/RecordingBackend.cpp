#include "Backend.h"
#include "gpu/recording/RecordingDevice.h"

namespace veloria::tests {

const Backend& backend() {
  static const Backend shared{
      false, false,
      [] {
        return std::make_unique<gpu::recording::RecordingDevice>(std::set<std::string>{"k_add", "v_cover", "f_copy"});
      },
      [] { return std::vector<std::byte>(1); }, [] { return std::string(); }};
  return shared;
}

}  // namespace veloria::tests
