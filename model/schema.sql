-- The empty database that the settings bundle ships and SpringBoard copies
-- into the data directory at first start. The library never creates tables;
-- this file is the only place the schema is written down.

-- One row per blacklisted number, kept as the user wrote it: an entry covers
-- every number that contains it.
CREATE TABLE Blacklist (
  id          INTEGER PRIMARY KEY,
  name        TEXT,
  phoneNumber TEXT
);

-- One row per blocked (or recorded outgoing) message. `date` is REAL so that
-- the duplicate test's ORDER BY date compares numerically.
CREATE TABLE History (
  id            INTEGER PRIMARY KEY,
  phoneNumber   TEXT,
  name          TEXT,
  message       TEXT,
  date          REAL,
  blockType     INTEGER,
  mediaType     INTEGER,
  mediaFileName TEXT,
  mediaURL      TEXT,
  isMine        INTEGER
);

-- The duplicate test asks for the newest row of one (number, message) pair on
-- every blocked message; this index answers it without reading the table.
CREATE INDEX HistoryByPairAndDate ON History (phoneNumber, message, date);
