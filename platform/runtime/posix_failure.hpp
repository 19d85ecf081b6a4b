// Reporting failed POSIX calls through the middleware logger.
#pragma once

namespace vexar::runtime {

// Reports "<call>: <system error text>" as a failure of `context`.
void reportPosixFailure(const char *context, const char *call, int error) noexcept;

// For calls that return an error number: true when `error` is 0, otherwise
// reports it and gives false.
bool posixCallSucceeded(int error, const char *context, const char *call) noexcept;

}  // namespace vexar::runtime
