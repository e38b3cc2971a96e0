#include "cli/ChildProgram.h"

#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>

#include "base/ExitCode.h"
#include "base/MediaClock.h"
#include "base/SocketCalls.h"

namespace veloria::cli {

namespace {

std::vector<char*> pointersTo(const std::vector<std::string>& texts) {
  std::vector<char*> pointers;
  for (const auto& text : texts) pointers.push_back(const_cast<char*>(text.c_str()));
  pointers.push_back(nullptr);
  return pointers;
}

/// Runs in the forked child: system calls only.
[[noreturn]] void become(char* const* commandLine, const SignalInbox& inbox, int reportTo) {
  inbox.restore();
  ::execvp(commandLine[0], commandLine);
  const int error = errno;
  [[maybe_unused]] const auto written = ::write(reportTo, &error, sizeof(error));
  ::_exit(1);
}

/// The error that the child reports; 0 if exec() succeeded and closed the pipe.
int errorFrom(int descriptor) {
  int error = 0;
  ssize_t count = 0;
  do {
    count = ::read(descriptor, &error, sizeof(error));
  } while (count < 0 && errno == EINTR);
  return count == sizeof(error) ? error : 0;
}

}  // namespace

bool CommandEnd::stoppedByTerminal() const {
  return kind == Kind::stopped && (number == SIGTSTP || number == SIGTTIN || number == SIGTTOU);
}

CommandEnd commandEnd(int status) {
  if (WIFSTOPPED(status)) return {CommandEnd::Kind::stopped, WSTOPSIG(status)};
  if (WIFSIGNALED(status)) return {CommandEnd::Kind::killed, WTERMSIG(status)};
  return {CommandEnd::Kind::exited, WEXITSTATUS(status)};
}

int exitCodeForExecError(int error) {
  return error == ENOENT ? notFound : notExecutable;
}

ChildProgram::ChildProgram(const std::vector<std::string>& commandLine, const SignalInbox& inbox) {
  const auto pointers = pointersTo(commandLine);
  auto report = makePipe(true);
  if (!report) throw std::system_error(errno, std::generic_category());
  pid_ = ::fork();
  if (pid_ == 0) become(pointers.data(), inbox, report->writable.get());
  int error = pid_ < 0 ? errno : 0;
  report->writable.reset();
  if (error == 0) error = errorFrom(report->readable.get());
  if (error == 0) return;
  if (pid_ > 0) ::waitpid(pid_, nullptr, 0);
  throw std::system_error(error, std::generic_category());
}

std::optional<CommandEnd> ChildProgram::news() const {
  int status = 0;
  if (::waitpid(pid_, &status, WNOHANG | WUNTRACED) != pid_) return std::nullopt;
  return commandEnd(status);
}

CommandEnd ChildProgram::wait(SignalInbox& inbox, double interval, const std::function<void()>& renew) const {
  double due = mediaTime() + interval;
  for (;;) {
    const auto change = news();
    if (change && change->kind != CommandEnd::Kind::stopped) return *change;
    if (change && change->stoppedByTerminal()) inbox.stop(change->number);
    const auto signal = inbox.next(due - mediaTime());
    if (signal && isForwarded(*signal, pid_)) ::kill(pid_, signal->number);
    const bool continued = signal && signal->number == SIGCONT;
    if (!continued && mediaTime() < due) continue;
    renew();
    due = mediaTime() + interval;
  }
}

}  // namespace veloria::cli
