#pragma once

#include <optional>
#include <string>

#include "base/Result.h"

class QString;
class QUrl;

namespace veloria {

/// True when nothing that is sent to the address leaves this computer: 127.0.0.0/8, ::1 or "localhost".
bool isLoopback(const QUrl& url);

/// Why the address may not be asked for; empty when it may. It must be https, or http on this computer, and name no
/// user.
QString objectionTo(const QUrl& url);

/// Why a request to `from` may not be sent on to `to`; empty when it may. As objectionTo(), and https never becomes
/// http.
QString objectionToRedirect(const QUrl& from, const QUrl& to);

/// Where the forecast service is: what NIMBRA_WEATHER_URL says, or the public service when that is not set or empty.
/// An https address, or http on this computer, with a path where the service lies below one; without user, query and
/// fragment. The result is normalised and has no slash at its end. Any thread.
Result<std::string> weatherBaseUrl(const std::optional<std::string>& fromEnvironment);

}  // namespace veloria
