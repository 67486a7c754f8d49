// Figures over the rows that are shown.

// The nearest rank: a value that was measured. `part` from 0 to 1; undefined for no values.
export function percentile(values, part) {
  if (values.length === 0) return undefined;
  const sorted = [...values].sort((a, b) => a - b);
  return sorted[Math.max(0, Math.ceil(part * sorted.length) - 1)];
}

// Calls by time in `count` bins from the first to the last: {from, width, bins: [{calls, bad}]}.
export function histogram(rows, count) {
  if (rows.length === 0) return {from: 0, width: 1, bins: []};
  const times = rows.map((row) => row.time);
  const from = Math.min(...times);
  const to = Math.max(...times);
  const width = Math.max(1, (to - from + 1) / count);
  const bins = Array.from({length: count}, () => ({calls: 0, bad: 0}));
  for (const row of rows) {
    const bin = bins[Math.min(count - 1, Math.floor((row.time - from) / width))];
    bin.calls += 1;
    if (row.fault || row.status !== 200) bin.bad += 1;
  }
  return {from, width, bins};
}

// Median and 95th percentile of how long calls took, in milliseconds, over the calls up to each one of a window.
export function latencies(rows, window = 50) {
  const taken = rows.filter((row) => row.took !== undefined);
  return taken.map((row, index) => {
    const near = taken.slice(Math.max(0, index - window + 1), index + 1).map((r) => r.took / 1000);
    return {time: row.time, ms: row.took / 1000, median: percentile(near, 0.5), p95: percentile(near, 0.95)};
  });
}

// The refused exchanges by what was wrong where: [{path, place, reason, rows}], the most frequent first.
export function problems(rows) {
  const groups = new Map();
  for (const row of rows) {
    if (!row.fault) continue;
    const found = row.violations ?? [{place: null, reason: row.fault}];
    for (const {place, reason} of found) {
      const kind = reason.replace(/, got .*$/s, '');
      const key = JSON.stringify([row.path, place, kind]);
      const group = groups.get(key) ?? {path: row.path, place, reason: kind, rows: []};
      if (group.rows.at(-1) !== row) group.rows.push(row);
      groups.set(key, group);
    }
  }
  return [...groups.values()].sort((a, b) => b.rows.length - a.rows.length || b.rows.at(-1).id - a.rows.at(-1).id);
}
