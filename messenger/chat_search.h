// Finding the chats of blacklisted numbers in the messenger's message
// database (a ZWAMESSAGE table with ZTOJID and ZFROMJID), for the purge.
//
// The defining search runs one query per number:
//   SELECT ZTOJID, ZFROMJID FROM ZWAMESSAGE
//   WHERE ZTOJID LIKE '%number%' OR ZFROMJID LIKE '%number%'
// and keeps, row by row, the recipient when it contains the number, else the
// sender when it does. Each query is a full scan, so a purge of many numbers
// over a large database takes seconds, while the messenger has a few before
// iOS suspends it. sessionsInOnePass finds the same JIDs for every number at
// once, in one scan with a multi-pattern search.
#ifndef HUSHWALL_MESSENGER_CHAT_SEARCH_H_
#define HUSHWALL_MESSENGER_CHAT_SEARCH_H_

#include <optional>
#include <vector>

#include "host/text.h"
#include "host/value.h"
#include "model/database.h"

namespace hushwall {

// The defining search for one number: the JIDs in table order, one per
// matching row, repeats kept. Empty when the query fails to prepare (no such
// table or columns, or a number holding a quote).
host::Array sessionsByQuery(const Database& db, const host::OptText& number);

// True when the defining search's result for `number` is exactly the rows,
// in table order, whose ZTOJID or else ZFROMJID contains the number: a
// number of printable ASCII without a quote (which would change the query's
// text), short enough for SQLite's pattern limit. Literal containment always
// passes the LIKE test, whatever `%`, `_` or letter case the number holds,
// and the row's texts are read as the query reads them (up to a NUL).
bool searchableInOnePass(const host::Text& number);

// For each number, in the same order: its JIDs exactly as sessionsByQuery
// gives them when searchableInOnePass, nothing (left to the query) when not.
// One scan of the table whatever the count of numbers.
std::vector<std::optional<host::Array>> sessionsInOnePass(const Database& db,
                                                         const std::vector<host::Text>& numbers);

}  // namespace hushwall

#endif  // HUSHWALL_MESSENGER_CHAT_SEARCH_H_
