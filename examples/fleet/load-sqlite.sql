DROP TABLE IF EXISTS copies;
CREATE TABLE copies AS
SELECT replace(replace(name, 'copies/', ''), '.jsonl', '') AS switch,
  value ->> 'stage' AS stage, value ->> 'pipe' AS pipe,
  value ->> 'groupPriority' AS groupPriority, value ->> 'groupId' AS groupId,
  value ->> 'copyId' AS copyId, value ->> 'name' AS name, value ->> 'usedEntries' AS usedEntries,
  value ->> 'availableEntries' AS availableEntries, value ->> 'freeEntries' AS freeEntries,
  value ->> 'totalEntries' AS totalEntries, value ->> 'percent' AS percent
FROM fsdir('copies'),
  json_each('[' || replace(rtrim(CAST(data AS TEXT), char(10)), char(10), ',') || ']')
WHERE value ->> 'type' = 'copy';

-- Hits of counters that are not programmed are not known.
DROP TABLE IF EXISTS entries;
CREATE TABLE entries AS
SELECT replace(replace(name, 'entries/', ''), '.jsonl', '') AS switch,
  value ->> 'stage' AS stage, value ->> 'pipe' AS pipe,
  value ->> 'groupPriority' AS groupPriority, value ->> 'groupId' AS groupId,
  value ->> 'copyId' AS copyId, value ->> 'shadowId' AS shadowId,
  value ->> 'sequence' AS sequence, value ->> 'feature' AS feature,
  value ->> 'description' AS description, value ->> 'action' AS action,
  value ->> 'state' AS state, value ->> 'reason' AS reason, value ->> 'bytes' AS bytes,
  CASE WHEN value ->> 'counterStatus' = 7 THEN value ->> 'hits' END AS hits
FROM fsdir('entries'),
  json_each('[' || replace(rtrim(CAST(data AS TEXT), char(10)), char(10), ',') || ']')
WHERE value ->> 'type' = 'entry';
