// Asking before a change that cannot be undone.
#ifndef HUSHWALL_TOOLS_CONFIRMATION_H_
#define HUSHWALL_TOOLS_CONFIRMATION_H_

#include <string>

namespace hushwall::tools {

// Returns when the change may go ahead: `yes` was given, or the user on the
// terminal answered "y" or "yes" to `question`. Throws std::invalid_argument
// when stdin is not a terminal and `yes` was not given (a script must say
// so), and std::runtime_error when the user declined.
void confirm(const std::string& question, bool yes);

}  // namespace hushwall::tools

#endif  // HUSHWALL_TOOLS_CONFIRMATION_H_
