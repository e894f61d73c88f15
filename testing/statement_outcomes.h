// What became of the SQL statements this process ran, counted from outside
// the code that ran them.
//
// The library ignores the result of every write, so a row it loses leaves no
// trace of its own. This file puts a thin layer in front of SQLite's
// sqlite3_prepare_v2 and sqlite3_step for the whole process, the library
// loaded into it included: every test binary that links the test helpers
// and SQLite has it. Each call goes on to SQLite unchanged; once a test asks
// for it, the result is also counted when the statement's text begins with
// the prefix being watched. It changes no behaviour: no retry, no wait.
#ifndef HUSHWALL_TESTING_STATEMENT_OUTCOMES_H_
#define HUSHWALL_TESTING_STATEMENT_OUTCOMES_H_

#include <string>

namespace hushwall::testing {

struct StatementOutcomes {
  long prepared = 0;       // prepares that gave a statement
  long prepareLocked = 0;  // prepares refused with SQLITE_BUSY or SQLITE_LOCKED
  long prepareFailed = 0;  // prepares refused for any other reason
  long done = 0;           // steps that ended with SQLITE_DONE
  long rows = 0;           // steps that gave SQLITE_ROW
  long stepLocked = 0;     // steps refused with SQLITE_BUSY or SQLITE_LOCKED
  long stepFailed = 0;     // steps that failed for any other reason

  // Statements of a writer that never got through: refused at prepare or step.
  long locked() const { return prepareLocked + stepLocked; }
  long failedOtherwise() const { return prepareFailed + stepFailed; }
};

// From now on counts statements whose text begins with `sqlPrefix`, from
// zero. Only one prefix is watched at a time.
void watchStatements(const std::string& sqlPrefix);
// What has been counted since watchStatements().
StatementOutcomes watchedOutcomes();

}  // namespace hushwall::testing

#endif  // HUSHWALL_TESTING_STATEMENT_OUTCOMES_H_
