// The line protocol between hushwall-sim and its app processes: one JSON
// object per line in each direction, requests down the app's stdin, replies
// up its stdout. Lines keep the two sides in step without any framing of
// their own, and a person can drive an app by hand with a terminal.
#ifndef HUSHWALL_SIM_PROTOCOL_H_
#define HUSHWALL_SIM_PROTOCOL_H_

#include <poll.h>
#include <unistd.h>

#include <nlohmann/json.hpp>
#include <optional>
#include <string>

namespace hushwall::sim {

// Reads lines from a file descriptor that may also be polled by its owner.
class LineReader {
 public:
  explicit LineReader(int fd) : fd_(fd) {}

  int fd() const { return fd_; }
  // One read() of whatever is there; false at end of file or on an error.
  bool fill();
  // The next complete line already read, without its "\n".
  std::optional<std::string> nextLine();

  enum class Status { kLine, kEnd, kTimeout };
  // Waits for the next line; kEnd when the writer has gone first.
  Status readLine(std::string& line, int timeoutMs);

 private:
  int fd_;
  std::string buffer_;
};

// Writes one message as one line; false when the reader has gone.
bool writeLine(int fd, const nlohmann::json& message);

// An app's side: serves the requests on stdin while its notification center
// (`centerOf()`, asked anew each turn) delivers whatever arrives in between,
// so a notification posted by one step reaches the app before the next step.
// `handle` takes one request line and says whether to go on; serving ends
// there or at the end of stdin. Both apps, the simulated one and the
// Objective-C one, serve through this.
template <class CenterOf, class Handle>
void serveLines(CenterOf centerOf, Handle handle) {
  LineReader in(STDIN_FILENO);
  for (;;) {
    auto& center = centerOf();
    center.processPending();
    auto data = center.pollData();
    pollfd fds[2] = {{STDIN_FILENO, POLLIN, 0}, {data.fd, data.events, 0}};
    if (::poll(fds, 2, data.getPollTimeout()) <= 0 || fds[0].revents == 0) continue;
    const bool open = in.fill();
    while (auto line = in.nextLine()) {
      if (!handle(*line)) return;
    }
    if (!open) return;
  }
}

}  // namespace hushwall::sim

#endif  // HUSHWALL_SIM_PROTOCOL_H_
