#include "platform/macos/mainqueue/MainQueue.h"

#import <dispatch/dispatch.h>

#include <memory>
#include <utility>

namespace veloria {

void postToMainQueue(std::function<void()> action) {
  const auto kept = std::make_shared<std::function<void()>>(std::move(action));
  dispatch_async(dispatch_get_main_queue(), ^{
    (*kept)();
  });
}

}  // namespace veloria
