#pragma once

#include <optional>
#include <string>

#include "base/Result.h"

class QString;
class QUrl;

namespace veloria {

/// True if the address is this computer: 127.0.0.0/8, ::1 or "localhost".
bool isLoopback(const QUrl& url);

/// Why the address may not be fetched; empty if it may. It must be https, or http on this computer, and name no user.
QString objectionTo(const QUrl& url);

/// Why a redirect from `from` to `to` may not be followed; empty if it may. As objectionTo(), and never from https to
/// http.
QString objectionToRedirect(const QUrl& from, const QUrl& to);

/// The address of the forecast service: NIMBRA_WEATHER_URL, or the public service if that is not set or empty. It must
/// be https, or http on this computer; it may have a path, but no user, query or fragment. The result is normalised and
/// does not end with a slash. Any thread.
Result<std::string> weatherBaseUrl(const std::optional<std::string>& fromEnvironment);

}  // namespace veloria
