#include "bench/cached_databases.h"

#include <sqlite3.h>
#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <functional>
#include <stdexcept>

namespace hushwall::bench {
namespace {
namespace fs = std::filesystem;

// Bumped whenever a generator changes, so that stale caches are not reused.
constexpr char kGeneration[] = "v1";
constexpr int kHistorySenders = 1000;

std::string digits(long long value, int width) {
  char buffer[32];
  std::snprintf(buffer, sizeof buffer, "%0*lld", width, value);
  return buffer;
}

struct Connection {
  explicit Connection(const std::string& path) {
    if (sqlite3_open(path.c_str(), &db) != SQLITE_OK) {
      throw std::runtime_error("cannot open " + path + ": " + sqlite3_errmsg(db));
    }
  }
  ~Connection() { sqlite3_close(db); }
  void exec(const std::string& sql) const {
    char* error = nullptr;
    if (sqlite3_exec(db, sql.c_str(), nullptr, nullptr, &error) != SQLITE_OK) {
      std::string message = error ? error : "?";
      sqlite3_free(error);
      throw std::runtime_error("SQL failed: " + message);
    }
  }
  sqlite3* db = nullptr;
};

// One prepared statement stepped once per row, inside one transaction: this
// is test data, so the fastest way in is the right one.
void insertRows(const Connection& connection, const char* sql, int rows,
                const std::function<void(sqlite3_stmt*, int)>& bind) {
  sqlite3_stmt* insert = nullptr;
  if (sqlite3_prepare_v2(connection.db, sql, -1, &insert, nullptr) != SQLITE_OK) {
    throw std::runtime_error(std::string("cannot prepare ") + sql);
  }
  connection.exec("BEGIN");
  for (int row = 0; row < rows; ++row) {
    bind(insert, row);
    if (sqlite3_step(insert) != SQLITE_DONE) throw std::runtime_error("insert failed");
    sqlite3_reset(insert);
  }
  connection.exec("COMMIT");
  sqlite3_finalize(insert);
}

void bindText(sqlite3_stmt* statement, int index, const std::string& text) {
  sqlite3_bind_text(statement, index, text.c_str(), -1, SQLITE_TRANSIENT);
}

// Builds into a temporary file and renames it, so that an interrupted build
// never leaves a half-filled cache behind.
std::string cached(const std::string& name, const std::function<void(const std::string&)>& build) {
  fs::path folder = HUSHWALL_BENCH_DATA_DIR;
  fs::create_directories(folder);
  fs::path file = folder / (name + "-" + kGeneration + ".db");
  if (fs::exists(file)) return file;
  fs::path partial = file;
  partial += ".partial-" + std::to_string(::getpid());
  fs::remove(partial);
  build(partial);
  fs::rename(partial, file);
  return file;
}

void fastBuild(const Connection& connection) {
  connection.exec("PRAGMA journal_mode=OFF; PRAGMA synchronous=OFF; PRAGMA cache_size=-262144");
}

}  // namespace

std::string historyNumber(int row) { return "346" + digits(row % kHistorySenders, 8); }
std::string historyMessage(int row) { return "Blocked message number " + std::to_string(row); }
double historyDate(int row) { return 1600000000.0 + 10.0 * row; }

std::string cachedHistoryDatabase(int rows) {
  return cached("history-" + std::to_string(rows), [rows](const std::string& path) {
    fs::copy_file(HUSHWALL_TEMPLATE_DB, path);
    Connection connection(path);
    fastBuild(connection);
    insertRows(connection,
               "INSERT INTO History (phoneNumber, name, message, date, blockType, mediaType, "
               "mediaFileName, mediaURL, isMine) VALUES (?,?,?,?,?,?,?,?,?)",
               rows, [](sqlite3_stmt* insert, int row) {
                 bindText(insert, 1, historyNumber(row));
                 bindText(insert, 2, "Sender " + std::to_string(row % kHistorySenders));
                 bindText(insert, 3, historyMessage(row));
                 sqlite3_bind_double(insert, 4, historyDate(row));
                 sqlite3_bind_int(insert, 5, 0);
                 sqlite3_bind_int(insert, 6, 0);
                 bindText(insert, 7, "");
                 bindText(insert, 8, "");
                 sqlite3_bind_int(insert, 9, 0);
               });
  });
}

std::string chatNumber(int chat) { return "346" + digits(chat, 8); }
std::string chatJid(int chat) { return chatNumber(chat) + "@s.whatsapp.net"; }

std::string cachedChatStorage(int rows) {
  return cached("chatstorage-" + std::to_string(rows), [rows](const std::string& path) {
    const int chats = rows / kMessagesPerChat;
    Connection connection(path);
    fastBuild(connection);
    // The columns the purge reads, among a few of the many the messenger keeps,
    // so that a row is about as wide as a real one.
    connection.exec(
        "CREATE TABLE ZWAMESSAGE (Z_PK INTEGER PRIMARY KEY, ZISFROMME INTEGER, "
        "ZMESSAGEDATE REAL, ZTEXT TEXT, ZTOJID TEXT, ZFROMJID TEXT, ZSTANZAID TEXT)");
    insertRows(connection,
               "INSERT INTO ZWAMESSAGE (ZISFROMME, ZMESSAGEDATE, ZTEXT, ZTOJID, ZFROMJID, "
               "ZSTANZAID) VALUES (?,?,?,?,?,?)",
               rows, [chats](sqlite3_stmt* insert, int row) {
                 // Chats take turns, as messages arrive in the real thing.
                 const int chat = row % chats;
                 const bool fromMe = (row / chats) % 2 == 0;
                 sqlite3_bind_int(insert, 1, fromMe ? 1 : 0);
                 sqlite3_bind_double(insert, 2, 500000000.0 + row);
                 bindText(insert, 3, "Message " + std::to_string(row) + " of the chat, some words");
                 if (fromMe) {
                   bindText(insert, 4, chatJid(chat));
                   sqlite3_bind_null(insert, 5);
                 } else {
                   sqlite3_bind_null(insert, 4);
                   bindText(insert, 5, chatJid(chat));
                 }
                 bindText(insert, 6, "3EB0" + digits(row, 16));
               });
  });
}

}  // namespace hushwall::bench
