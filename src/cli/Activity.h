#pragma once

namespace veloria::cli {

/// What a writer reports of its work.
enum class Activity { busy, idle, ok, fail };

}  // namespace veloria::cli
