#include "tools/confirmation.h"

#include <unistd.h>

#include <iostream>
#include <stdexcept>

namespace hushwall::tools {

void confirm(const std::string& question, bool yes) {
  if (yes) return;
  if (::isatty(STDIN_FILENO) == 0) {
    throw std::invalid_argument(question + " Not asked, since stdin is not a terminal: add --yes");
  }
  std::cerr << question << " [y/N] " << std::flush;
  std::string answer;
  std::getline(std::cin, answer);
  if (answer != "y" && answer != "Y" && answer != "yes") {
    throw std::runtime_error("not confirmed; nothing changed");
  }
}

}  // namespace hushwall::tools
