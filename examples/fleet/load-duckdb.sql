CREATE OR REPLACE TABLE copies AS
SELECT regexp_extract(filename, '([^/]+)\.jsonl$', 1) AS switch, * EXCLUDE (type, filename)
FROM read_json('copies/*.jsonl', format = 'newline_delimited', filename = true, columns = {
  type: 'VARCHAR', stage: 'VARCHAR', pipe: 'SMALLINT', groupPriority: 'UINTEGER',
  groupId: 'UINTEGER', copyId: 'UINTEGER', name: 'VARCHAR', usedEntries: 'UBIGINT',
  availableEntries: 'UINTEGER', freeEntries: 'UINTEGER', totalEntries: 'UINTEGER',
  percent: 'DOUBLE'})
WHERE type = 'copy';

-- Hits of counters that are not programmed are not known.
CREATE OR REPLACE TABLE entries AS
SELECT regexp_extract(filename, '([^/]+)\.jsonl$', 1) AS switch,
  * EXCLUDE (type, filename, counterStatus, hits),
  CASE WHEN counterStatus = 7 THEN hits END AS hits
FROM read_json('entries/*.jsonl', format = 'newline_delimited', filename = true, columns = {
  type: 'VARCHAR', stage: 'VARCHAR', pipe: 'SMALLINT', groupPriority: 'UINTEGER',
  groupId: 'UINTEGER', copyId: 'UINTEGER', shadowId: 'UBIGINT', sequence: 'UINTEGER',
  feature: 'VARCHAR', description: 'VARCHAR', action: 'VARCHAR', state: 'VARCHAR',
  reason: 'VARCHAR', counterStatus: 'UTINYINT', hits: 'UBIGINT', bytes: 'UBIGINT'})
WHERE type = 'entry';
