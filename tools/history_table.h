// Reading the device's database for display: the tool's own read-only view,
// apart from the library's statements.
#ifndef HUSHWALL_TOOLS_HISTORY_TABLE_H_
#define HUSHWALL_TOOLS_HISTORY_TABLE_H_

#include <functional>
#include <nlohmann/json.hpp>
#include <ostream>
#include <string>
#include <vector>

namespace hushwall::tools {

// Every row of `table` in rowid order, as objects keyed by column name.
// Throws std::runtime_error when the database or the table cannot be read.
nlohmann::json readTable(const std::string& databaseFile, const std::string& table);

// The same rows handed to `onRow` one at a time, none kept.
void forEachRow(const std::string& databaseFile, const std::string& table,
                const std::function<void(const nlohmann::json&)>& onRow);

// The same rows printed as readTable's result would dump with an indent of
// 2, a row at a time.
void printTableJson(std::ostream& out, const std::string& databaseFile, const std::string& table);

// The History columns shown in a text table; mediaURL is left out, being long
// and telling little at a glance (the JSON rows carry it).
const std::vector<std::string>& historyColumns();

// Prints rows as an aligned text table with the given columns.
void printTable(std::ostream& out, const nlohmann::json& rows,
                const std::vector<std::string>& columns);

}  // namespace hushwall::tools

#endif  // HUSHWALL_TOOLS_HISTORY_TABLE_H_
