// The line protocol between hushwall-sim and its app processes: one JSON
// object per line in each direction, requests down the app's stdin, replies
// up its stdout. Lines keep the two sides in step without any framing of
// their own, and a person can drive an app by hand with a terminal.
#ifndef HUSHWALL_SIM_PROTOCOL_H_
#define HUSHWALL_SIM_PROTOCOL_H_

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

}  // namespace hushwall::sim

#endif  // HUSHWALL_SIM_PROTOCOL_H_
