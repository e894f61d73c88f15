// How wide text shows in a terminal, for the tools' aligned tables.
//
// A table cut at a byte count splits multi-byte characters and leaves
// broken bytes on the screen; one padded by bytes misaligns every row with
// a non-ASCII name. Widths here count terminal columns by character:
// combining marks, joiners and variation selectors take none, East Asian
// wide and full-width characters and emoji take two, everything else one.
#ifndef HUSHWALL_TOOLS_DISPLAY_WIDTH_H_
#define HUSHWALL_TOOLS_DISPLAY_WIDTH_H_

#include <cstddef>
#include <string>
#include <string_view>

namespace hushwall::tools {

// Columns the UTF-8 text takes (bad bytes count as the U+FFFD they show as).
std::size_t displayWidth(std::string_view utf8);

// The longest beginning of `utf8` that fits `columns`, cut between
// characters and never between a character and the marks that follow it.
// (companion::displayText cuts by characters instead, for the phone's
// screens and for rows before they reach a table; this fits a table cell.)
std::string cutToWidth(std::string_view utf8, std::size_t columns);

// `utf8` with each control character (C0, DEL, C1: line breaks, tabs,
// terminal escapes) shown as U+FFFD, so that a cell from another writer
// stays on its line and moves no cursor.
std::string printable(std::string_view utf8);

}  // namespace hushwall::tools

#endif  // HUSHWALL_TOOLS_DISPLAY_WIDTH_H_
