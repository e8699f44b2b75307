-- The fullest copies of the fleet.
SELECT switch, stage, name, usedEntries, totalEntries, percent
FROM copies WHERE percent >= 70 ORDER BY percent DESC, switch, stage, name;

-- For each group name, the switches and the least room.
SELECT name, count(DISTINCT switch) AS switches, min(availableEntries) AS leastAvailable
FROM copies WHERE availableEntries IS NOT NULL GROUP BY name ORDER BY leastAvailable, name;

-- Entries that are not programmed.
SELECT switch, stage, shadowId, description, state, reason
FROM entries WHERE state <> 'programmed' ORDER BY switch, stage, shadowId;

-- Rules that no switch has ever hit.
SELECT stage, description, action, count(DISTINCT switch) AS switches
FROM entries GROUP BY stage, description, action
HAVING max(hits) = 0 ORDER BY stage, description, action;
