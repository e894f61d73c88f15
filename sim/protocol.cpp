#include "sim/protocol.h"

#include <poll.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>

namespace hushwall::sim {

bool LineReader::fill() {
  char chunk[4096];
  for (;;) {
    ssize_t n = ::read(fd_, chunk, sizeof chunk);
    if (n < 0 && errno == EINTR) continue;
    if (n <= 0) return false;
    buffer_.append(chunk, static_cast<std::size_t>(n));
    return true;
  }
}

std::optional<std::string> LineReader::nextLine() {
  std::size_t end = buffer_.find('\n');
  if (end == std::string::npos) return std::nullopt;
  std::string line = buffer_.substr(0, end);
  buffer_.erase(0, end + 1);
  return line;
}

LineReader::Status LineReader::readLine(std::string& line, int timeoutMs) {
  using Clock = std::chrono::steady_clock;
  const auto deadline = Clock::now() + std::chrono::milliseconds(timeoutMs);
  for (;;) {
    if (auto next = nextLine()) {
      line = std::move(*next);
      return Status::kLine;
    }
    auto left = std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now());
    if (left.count() <= 0) return Status::kTimeout;
    pollfd p{fd_, POLLIN, 0};
    int ready = ::poll(&p, 1, static_cast<int>(left.count()));
    if (ready < 0 && errno != EINTR) return Status::kEnd;
    if (ready > 0 && !fill()) return Status::kEnd;
  }
}

bool writeLine(int fd, const nlohmann::json& message) {
  // Invalid UTF-8 from a scenario is replaced rather than refused: the
  // request must still go out.
  std::string text = message.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace) + "\n";
  std::size_t done = 0;
  while (done < text.size()) {
    ssize_t n = ::write(fd, text.data() + done, text.size() - done);
    if (n < 0 && errno == EINTR) continue;
    if (n <= 0) return false;
    done += static_cast<std::size_t>(n);
  }
  return true;
}

}  // namespace hushwall::sim
