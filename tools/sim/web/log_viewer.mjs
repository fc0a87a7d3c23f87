// The log viewer of the simulator's page: lists the files on the simulated USB stick and
// plots chosen columns of one against the dash's clock.
//
// A log is a header of five lines (the interval; "," and the column names; the ranges;
// "DateTime" and "Value"s; "seconds" and the units), then one row every 20 ms: the time
// stamp "2000-01-DD::HH:MM:SS.mmm" (the dash's uptime, the day counted from 1) and a
// value a column. A file the dash continued after a power cycle holds another header
// further down and its clock starts again, so each header or step back in time begins a
// new run. Logs run to hundreds of thousands of rows of 154 fields: the file is kept as
// bytes, one pass finds the rows and their time stamps, and a column is read out of the
// rows only when it is first plotted.

const COMMA = 44, NEWLINE = 10, RETURN = 13, MINUS = 45, DOT = 46, COLON = 58;

function digit(c) {
  return c >= 48 && c <= 57;
}

let stampEnd = 0;  // where the time stamp that `stampAt` read ends

// Seconds of uptime of the time stamp at p, or -1 when the line holds none.
function stampAt(b, p, e) {
  // "YYYY-MM-" stands still: the date is January 2000 on every dash.
  if (e - p < 24 || b[p + 4] !== MINUS || b[p + 7] !== MINUS) return -1;
  let q = p + 8, day = 0;
  while (q < e && digit(b[q])) day = day * 10 + b[q++] - 48;
  if (b[q] !== COLON || b[q + 1] !== COLON) return -1;
  q += 2;
  const part = [0, 0, 0, 0];  // hours, minutes, seconds, milliseconds
  const after = [COLON, COLON, DOT, -1];
  for (let k = 0; k < 4; k++) {
    if (!digit(b[q])) return -1;
    while (q < e && digit(b[q])) part[k] = part[k] * 10 + b[q++] - 48;
    if (after[k] >= 0 && b[q++] !== after[k]) return -1;
  }
  stampEnd = q;
  return (((day - 1) * 24 + part[0]) * 60 + part[1]) * 60 + part[2] + part[3] / 1000;
}

// The value of the field at p (ending at a comma or e); NaN for an empty or broken one.
function numberAt(b, p, e) {
  let v = 0, scale = 0, seen = false;
  const negative = b[p] === MINUS;
  for (let q = negative ? p + 1 : p; q < e; q++) {
    const c = b[q];
    if (digit(c)) {
      v = v * 10 + c - 48;
      scale *= 10;
      seen = true;
    } else if (c === DOT && scale === 0) {
      scale = 1;
    } else if (c === COMMA || c === RETURN) {
      break;
    } else {
      // An exponent, "INF", "NAN" or worse: the slow way.
      let end = q;
      while (end < e && b[end] !== COMMA) end++;
      const text = String.fromCharCode.apply(null, b.subarray(p, end)).trim();
      return text === "" ? NaN : Number(text);
    }
  }
  if (!seen) return NaN;
  if (scale > 1) v /= scale;
  return negative ? -v : v;
}

function splitLine(b, p, e) {
  return new TextDecoder().decode(b.subarray(p, e)).replace(/\r$/, "").split(",");
}

// One pass over the file: column names and units from the first header, the rows with
// their time stamps, and the runs. A last line without its newline is still being
// written and waits for the next reading.
export function parseLog(bytes) {
  const log = { bytes, names: null, units: null, rows: 0, runs: [] };
  let capacity = Math.max(1024, (bytes.length / 600) | 0);
  let rowStart = new Uint32Array(capacity), rowEnd = new Uint32Array(capacity), time = new Float64Array(capacity);
  let rows = 0, first = 0, last = -Infinity;
  const endRun = () => {
    if (rows > first) log.runs.push({ first, end: rows });
    first = rows;
    last = -Infinity;
  };
  for (let p = 0; p < bytes.length;) {
    const nl = bytes.indexOf(NEWLINE, p);
    if (nl < 0) break;
    const e = nl > p && bytes[nl - 1] === RETURN ? nl - 1 : nl;
    const t = stampAt(bytes, p, e);
    if (t < 0) {
      // A header line: the first header names the columns.
      endRun();
      if (!log.names && bytes[p] === COMMA) log.names = splitLine(bytes, p + 1, e);
      else if (!log.units && e - p > 8 && splitLine(bytes, p, p + 8)[0] === "seconds") log.units = splitLine(bytes, p, e).slice(1);
    } else {
      if (t < last) endRun();
      if (rows === capacity) {
        capacity *= 2;
        const grow = (old, Type) => { const a = new Type(capacity); a.set(old); return a; };
        rowStart = grow(rowStart, Uint32Array);
        rowEnd = grow(rowEnd, Uint32Array);
        time = grow(time, Float64Array);
      }
      rowStart[rows] = stampEnd;  // the comma before the first value
      rowEnd[rows] = e;
      time[rows] = last = t;
      rows++;
    }
    p = nl + 1;
  }
  endRun();
  Object.assign(log, { rows, rowStart, rowEnd, time });
  if (!log.names) {
    // No header: the columns are counted in the first row.
    const fields = rows ? splitLine(bytes, rowStart[0] + 1, rowEnd[0]).length : 0;
    log.names = Array.from({ length: fields }, (_, i) => "Column " + (i + 2));
  }
  log.units = log.names.map((_, i) => (log.units && log.units[i]) || "");
  return log;
}

// Reads the columns (0 is the first after the time stamp, in ascending order) out of
// every row in one pass. A column is a Float64Array, or an Array with null where a
// field is missing or no number, so that the plot leaves a gap there.
export function readColumns(log, columns) {
  const b = log.bytes, out = columns.map(() => new Float64Array(log.rows));
  const gaps = columns.map(() => 0);
  for (let r = 0; r < log.rows; r++) {
    let p = log.rowStart[r], field = 0;  // p stands on the comma before the field
    const e = log.rowEnd[r];
    for (let k = 0; k < columns.length; k++) {
      for (const want = columns[k]; field < want && p < e; field++) {
        p++;
        while (p < e && b[p] !== COMMA) p++;
      }
      const v = p < e ? numberAt(b, p + 1, e) : NaN;
      out[k][r] = v;
      if (v !== v) gaps[k]++;
    }
  }
  return out.map((values, k) => (gaps[k] ? Array.from(values, (v) => (v === v ? v : null)) : values));
}

// Uptime as the dash's clock counts it: "1d 2:03:04.5".
export function clock(t, decimals = 0) {
  const f = 10 ** decimals;
  let rest = Math.round(t * f) / f;
  const days = Math.floor(rest / 86400);
  rest -= days * 86400;
  const hours = Math.floor(rest / 3600);
  rest -= hours * 3600;
  const minutes = Math.floor(rest / 60);
  rest -= minutes * 60;
  const seconds = rest.toFixed(decimals).padStart(decimals ? decimals + 3 : 2, "0");
  return (days ? days + "d " : "") + hours + ":" + String(minutes).padStart(2, "0") + ":" + seconds;
}

// ---- The page ---------------------------------------------------------------------------

const COLORS = ["#ffb300", "#4fc3f7", "#81c784", "#e57373", "#ba68c8", "#fff176", "#4db6ac", "#f06292", "#aed581", "#90a4ae"];
// Steps of the time axis that a person reads easily: parts of a second, seconds, minutes, hours.
const TIME_STEPS = [0.001, 0.002, 0.005, 0.01, 0.02, 0.05, 0.1, 0.2, 0.5, 1, 2, 5, 10, 15, 30,
  60, 120, 300, 600, 900, 1800, 3600, 7200, 10800, 21600, 43200, 86400];

function startViewer() {
  const $ = (id) => document.getElementById(id);
  const view = { name: null, log: null, cache: new Map(), chosen: new Set(), run: 0, chart: null, listed: "" };

  function size(bytes) {
    return bytes < 1024 ? bytes + " B" : bytes < 1048576 ? (bytes / 1024).toFixed(1) + " kB" : (bytes / 1048576).toFixed(1) + " MB";
  }

  async function list() {
    try {
      const text = await (await fetch("/api/logs")).text();
      if (text !== view.listed) {
        view.listed = text;
        const files = JSON.parse(text);
        $("log-files").replaceChildren(...files.map((f) => {
          const tr = document.createElement("tr");
          tr.dataset.name = f.name;
          tr.classList.toggle("chosen", f.name === view.name);
          for (const cell of [f.name, size(f.size), new Date(f.modified).toLocaleString()]) {
            tr.appendChild(document.createElement("td")).textContent = cell;
          }
          tr.onclick = () => open(f.name);
          return tr;
        }));
        $("log-none").hidden = files.length > 0;
      }
    } catch (e) { /* the simulator is gone; the page says so elsewhere */ }
    setTimeout(list, 2000);
  }

  async function open(name) {
    const reload = name === view.name;
    $("log-info").textContent = "reading\u2026";
    let log, ms;
    try {
      const r = await fetch("/api/logs/" + encodeURIComponent(name));
      if (!r.ok) {
        $("log-info").textContent = name + ": " + (await r.text()).trim();
        return;
      }
      const t0 = performance.now();
      log = parseLog(new Uint8Array(await r.arrayBuffer()));
      ms = performance.now() - t0;
    } catch (e) {
      $("log-info").textContent = name + ": " + e.message;
      return;
    }
    const keep = new Set([...view.chosen].map((c) => view.log.names[c]));
    const wasLast = !view.log || view.run === view.log.runs.length - 1;
    Object.assign(view, { name, log, cache: new Map(), chosen: new Set() });
    log.names.forEach((n, c) => { if (keep.has(n)) view.chosen.add(c); });
    if (view.chosen.size === 0 && log.names.length) {
      const rpm = log.names.findIndex((n) => n === "RPM" || n.endsWith(".RPM"));
      view.chosen.add(rpm >= 0 ? rpm : 0);
    }
    // A reload stays on the run it showed, unless that was the newest.
    if (!reload || wasLast || view.run >= log.runs.length) view.run = Math.max(0, log.runs.length - 1);
    for (const tr of $("log-files").children) tr.classList.toggle("chosen", tr.dataset.name === name);
    $("log-name").textContent = name;
    $("log-download").href = "/api/logs/" + encodeURIComponent(name);
    $("log-download").hidden = false;
    $("log-reload").disabled = $("log-whole").disabled = $("log-filter").disabled = false;
    const runs = $("log-run");
    runs.replaceChildren(...log.runs.map((run, i) => new Option(
      "run " + (i + 1) + ": " + clock(log.time[run.first]) + " to " + clock(log.time[run.end - 1]), i)));
    runs.value = view.run;
    runs.hidden = log.runs.length < 2;
    columns();
    draw();
    const span = log.runs.reduce((sum, run) => sum + log.time[run.end - 1] - log.time[run.first], 0);
    $("log-info").textContent = log.rows.toLocaleString() + " rows, " + clock(span, 1) + ", " + log.names.length +
      " columns" + (log.runs.length > 1 ? ", " + log.runs.length + " runs" : "") + " \u00b7 read in " + Math.round(ms) + " ms";
  }

  // The filterable list of columns, with their units.
  function columns() {
    const names = view.log.names, units = view.log.units;
    $("log-columns").replaceChildren(...names.map((n, c) => {
      const label = document.createElement("label");
      const box = label.appendChild(document.createElement("input"));
      box.type = "checkbox";
      box.checked = view.chosen.has(c);
      box.onchange = () => { box.checked ? view.chosen.add(c) : view.chosen.delete(c); draw(); };
      label.append(n + " ");
      label.appendChild(document.createElement("small")).textContent = units[c];
      label.dataset.match = (n + " " + units[c]).toLowerCase();
      return label;
    }));
    filter();
  }

  function filter() {
    const words = $("log-filter").value.toLowerCase().split(/\s+/).filter(Boolean);
    for (const label of $("log-columns").children) label.hidden = !words.every((w) => label.dataset.match.includes(w));
  }

  function draw() {
    if (view.chart) view.chart.destroy();
    view.chart = null;
    const log = view.log, run = log && log.runs[view.run];
    $("log-chart").dataset.series = "";
    if (!run || view.chosen.size === 0) {
      $("log-chart").textContent = !log ? "" : !run ? "No rows in this file yet." : "Choose a column on the right.";
      return;
    }
    $("log-chart").textContent = "";
    const chosen = [...view.chosen].sort((a, b) => a - b);
    const missing = chosen.filter((c) => !view.cache.has(c));
    readColumns(log, missing).forEach((values, k) => view.cache.set(missing[k], values));

    const slice = (a) => (a.subarray ? a.subarray(run.first, run.end) : a.slice(run.first, run.end));
    const grid = { stroke: "#2a2f37", width: 1 }, ticks = { stroke: "#3a414c", width: 1 };
    const data = [slice(log.time)];
    const series = [{ label: "Time", value: (u, v) => (v == null ? "\u2013" : clock(v, 3)) }];
    const scales = { x: { time: false } };
    const axes = [{
      stroke: "#8a93a3", grid, ticks, incrs: TIME_STEPS,
      values: (u, splits, axis, space, step) => splits.map((t) => clock(t, step < 1 ? Math.ceil(-Math.log10(step) - 1e-9) : 0)),
    }];
    // One scale for each unit, so that a temperature is not flattened by engine speed;
    // the first four have an axis, left and right by turns.
    const scaleOf = new Map();
    chosen.forEach((c, i) => {
      const unit = log.units[c], color = COLORS[i % COLORS.length];
      if (!scaleOf.has(unit)) {
        const k = scaleOf.size, key = "unit" + k;
        scaleOf.set(unit, key);
        scales[key] = {};
        axes.push({ scale: key, label: unit, side: k % 2 ? 1 : 3, show: k < 4, stroke: color, grid: { ...grid, show: k === 0 }, ticks });
      }
      data.push(slice(view.cache.get(c)));
      series.push({ label: log.names[c], scale: scaleOf.get(unit), stroke: color, width: 1,
        value: (u, v) => (v == null ? "\u2013" : v.toFixed(2) + (unit ? " " + unit : "")) });
    });
    const box = $("log-chart");
    view.chart = new uPlot({ width: box.clientWidth, height: 360, series, scales, axes,
      cursor: { drag: { x: true, y: false } } }, data, box);
    box.dataset.series = chosen.map((c) => log.names[c]).join("\n");
  }

  $("log-filter").oninput = filter;
  $("log-run").onchange = (e) => { view.run = +e.target.value; draw(); };
  $("log-reload").onclick = () => view.name && open(view.name);
  $("log-whole").onclick = () => {
    const run = view.chart && view.log.runs[view.run];
    if (run) view.chart.setScale("x", { min: view.log.time[run.first], max: view.log.time[run.end - 1] });
  };
  new ResizeObserver(() => {
    if (view.chart) view.chart.setSize({ width: $("log-chart").clientWidth, height: 360 });
  }).observe($("log-chart"));
  list();
}

if (typeof document !== "undefined") startViewer();
