#pragma once

#include <functional>
#include <optional>

namespace veloria {

/// What can be known from services on the buses.
enum class BusFact { systemSleeping, sessionHidden, saverActive };

/// Tells a fact; nothing: it is not known (any more).
using FactReport = std::function<void(BusFact fact, std::optional<bool> value)>;

}  // namespace veloria
