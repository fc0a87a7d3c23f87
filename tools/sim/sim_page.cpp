#include "sim_page.h"

// The files embedded when the simulator was built (tools/CMakeLists.txt).
extern const unsigned char SIM_WEB_LOG_VIEWER[], SIM_WEB_CHART_JS[], SIM_WEB_CHART_CSS[], SIM_WEB_CHART_LICENSE[];
extern const unsigned int SIM_WEB_LOG_VIEWER_SIZE, SIM_WEB_CHART_JS_SIZE, SIM_WEB_CHART_CSS_SIZE,
    SIM_WEB_CHART_LICENSE_SIZE;

bool sim_page_file(const std::string& path, SIM_PAGE_FILE_T* file)
{
    static const struct {
        const char* path;
        SIM_PAGE_FILE_T file;
    } FILES[] = {
        {"/web/log_viewer.mjs", {"text/javascript; charset=utf-8", SIM_WEB_LOG_VIEWER, SIM_WEB_LOG_VIEWER_SIZE}},
        {"/web/uPlot.iife.min.js", {"text/javascript; charset=utf-8", SIM_WEB_CHART_JS, SIM_WEB_CHART_JS_SIZE}},
        {"/web/uPlot.min.css", {"text/css; charset=utf-8", SIM_WEB_CHART_CSS, SIM_WEB_CHART_CSS_SIZE}},
        {"/web/uPlot.LICENSE.txt", {"text/plain; charset=utf-8", SIM_WEB_CHART_LICENSE, SIM_WEB_CHART_LICENSE_SIZE}},
    };
    for (const auto& f : FILES) {
        if (path == f.path) {
            *file = f.file;
            return true;
        }
    }
    return false;
}

const char* const SIM_PAGE_HTML = R"PAGE(<!doctype html>
<html lang="en">
<head>
<meta charset="utf-8">
<title>motordash simulator</title>
<link rel="stylesheet" href="/web/uPlot.min.css">
<style>
  body { background: #15181d; color: #d8dee9; font: 14px/1.4 system-ui, sans-serif; margin: 0; }
  header { padding: 10px 18px; background: #0d0f12; border-bottom: 1px solid #2a2f37; }
  header b { color: #ffb300; }
  main { display: grid; grid-template-columns: max-content minmax(280px, 380px); gap: 24px; padding: 18px; align-items: start; }
  @media (max-width: 1100px) { main { grid-template-columns: 1fr; } }
  .screens { display: flex; flex-wrap: wrap; gap: 18px; align-items: flex-start; }
  figure { margin: 0; }
  figcaption { color: #8a93a3; font-size: 12px; margin-top: 4px; }
  .screens canvas { background: #000; display: block; border: 2px solid #2a2f37; border-radius: 4px; }
  #big { image-rendering: pixelated; }
  .keys { display: flex; gap: 6px; margin-top: 10px; }
  .keys button { flex: 1; height: 48px; font-size: 15px; font-weight: 600; }
  button { background: #262b33; color: #e6e9ef; border: 1px solid #3a414c; border-radius: 6px; padding: 6px 12px; cursor: pointer; }
  button:hover { border-color: #ffb300; }
  button.down { background: #ffb300; color: #000; }
  section { background: #1c2026; border: 1px solid #2a2f37; border-radius: 8px; padding: 12px 14px; }
  section h2 { font-size: 13px; text-transform: uppercase; letter-spacing: .06em; color: #8a93a3; margin: 0 0 8px; }
  .row { display: flex; gap: 6px; align-items: center; margin: 6px 0; flex-wrap: wrap; }
  pre { font-size: 12px; max-height: 220px; overflow: auto; background: #0d0f12; padding: 8px; border-radius: 4px; }
  .value { color: #ffb300; font-weight: 600; }
  #error { color: #ff6b6b; }
  .io { display: grid; grid-template-columns: repeat(2, max-content 64px max-content); gap: 3px 6px; align-items: center; font-size: 12px; }
  .io input[type=number] { width: 58px; background: #0d0f12; color: #d8dee9; border: 1px solid #3a414c; border-radius: 4px; }
  a { color: #ffb300; }
  .hint { color: #8a93a3; font-size: 12px; }
  #logs { margin: 0 18px 18px; }
  .logs { display: grid; grid-template-columns: minmax(220px, max-content) minmax(0, 1fr) 260px; gap: 18px; align-items: start; }
  @media (max-width: 1100px) { .logs { grid-template-columns: 1fr; } }
  .logs table { border-collapse: collapse; font-size: 12px; }
  .logs td, .logs th { padding: 3px 8px; text-align: left; white-space: nowrap; }
  .logs th { color: #8a93a3; font-weight: normal; }
  #log-files tr { cursor: pointer; }
  #log-files tr:hover { background: #262b33; }
  #log-files tr.chosen { background: #3a2f10; color: #ffb300; }
  #log-chart { min-height: 360px; color: #8a93a3; }
  #log-filter { width: 100%; box-sizing: border-box; background: #0d0f12; color: #d8dee9; border: 1px solid #3a414c; border-radius: 4px; padding: 5px; }
  #log-columns { max-height: 420px; overflow: auto; margin-top: 6px; font-size: 12px; }
  #log-columns label { display: block; white-space: nowrap; }
  #log-columns label[hidden] { display: none; }
  #log-columns small { color: #8a93a3; }
</style>
</head>
<body>
<header><b>motordash</b> simulator &mdash; <span id="summary">connecting&hellip;</span> <span id="error"></span></header>
<main>
  <div>
    <div class="screens">
      <figure><canvas id="screen" width="320" height="240" data-frames="0"></canvas>
        <figcaption>true size &middot; <span id="fps">0</span> pictures/s</figcaption></figure>
      <figure><canvas id="big" width="640" height="480"></canvas><figcaption>2x</figcaption></figure>
    </div>
    <div class="keys" id="keys"></div>
    <div class="row" style="color:#8a93a3;font-size:12px">Click to press and release; hold for the hold actions. Keys 1 to 5 on the keyboard work too.</div>
  </div>
  <div style="display:flex;flex-direction:column;gap:14px">
    <section><h2>USB stick</h2>
      <div class="row">State: <span class="value" id="stick">?</span></div>
      <div class="row"><button id="usb-insert">Insert</button><button id="usb-eject">Eject</button><button id="usb-pull">Pull</button></div>
    </section>
    <section><h2>Device</h2>
      <div class="row">Dash: <span class="value" id="dash">?</span>, power cycles <span id="cycles">0</span></div>
      <div class="row"><button id="power">Power cycle</button>
        Product <select id="product"><option value="310">310 (320 x 240)</option><option value="720">720 (800 x 480, touch)</option></select></div>
      <div class="row" id="touch-row" hidden><button id="touch-calibrate">Calibrate touch</button>
        <span style="color:#8a93a3;font-size:12px">the screen takes the mouse as a finger</span></div>
    </section>
    <section><h2>Engine controller</h2>
      <div class="row">Scenario <select id="scenario"></select> <button id="pause">Pause</button></div>
      <div class="row">Logging request <select id="log-request"><option value="auto">auto: while driven</option>
        <option value="on">on</option><option value="off">off</option></select></div>
      <div class="row" id="ecu"></div>
      <div class="row">Dash asks: <span class="value" id="settings">&ndash;</span></div>
    </section>
    <section><h2>I/O board</h2>
      <div class="row">Firmware <span class="value" id="io-version">&ndash;</span> <button id="io-link">Pull off the link</button></div>
      <div class="io" id="io-inputs"></div>
      <div class="row hint">Outputs as the board drives them: duty of 255 and the voltage read back.</div>
      <div class="row" id="io-outputs" style="font-size:12px"></div>
    </section>
    <section><h2>Frames the dash sent</h2><pre id="frames"></pre></section>
  </div>
</main>
<section id="logs"><h2>Logs on the USB stick</h2>
  <div class="logs">
    <div><table><thead><tr><th>File</th><th>Size</th><th>Modified</th></tr></thead><tbody id="log-files"></tbody></table>
      <div class="hint" id="log-none">The stick holds no files.</div></div>
    <div>
      <div class="row"><span class="value" id="log-name">Choose a file</span> <select id="log-run" hidden></select>
        <button id="log-reload" disabled>Reload</button> <button id="log-whole" disabled>Whole run</button>
        <a id="log-download" download hidden>Download</a> <span class="hint" id="log-info"></span></div>
      <div id="log-chart"></div>
      <div class="hint">Drag across the plot to zoom in; double-click it or press Whole run to see all of it.
        Charts by uPlot (<a href="/web/uPlot.LICENSE.txt">MIT licence</a>).</div>
    </div>
    <div><input id="log-filter" type="search" placeholder="Filter columns" disabled><div id="log-columns"></div></div>
  </div>
</section>
<script src="/web/uPlot.iife.min.js"></script>
<script type="module" src="/web/log_viewer.mjs"></script>
<script>
"use strict";
const $ = (id) => document.getElementById(id);
let state = null, paused = false;

async function post(path) {
  const r = await fetch(path, { method: "POST" });
  const text = await r.text();
  if (!r.ok) { $("error").textContent = text.trim(); return; }
  $("error").textContent = "";
  show(JSON.parse(text));
}

function show(s) {
  state = s;
  $("summary").textContent = "Zelvo" + s.product + " in " + s.root;
  $("stick").textContent = s.stick;
  $("dash").textContent = s.dash;
  $("cycles").textContent = s.powerCycles;
  $("settings").textContent = s.settings || "\u2013";
  $("product").value = s.product;
  $("touch-row").hidden = s.product !== "720";
  const sc = $("scenario");
  if (sc.options.length !== s.scenarios.length) {
    sc.innerHTML = s.scenarios.map((n) => "<option>" + n + "</option>").join("");
  }
  if (s.ecu) {
    if (s.ecu.scenario) sc.value = s.ecu.scenario;
    paused = !!s.ecu.paused;
    $("pause").textContent = paused ? "Resume" : "Pause";
    $("log-request").value = s.ecu.log_request;
    $("ecu").textContent = Object.entries(s.ecu).filter(([k]) => !["scenario", "paused", "log_request"].includes(k))
      .map(([k, v]) => k + " " + (typeof v === "number" ? Math.round(v * 10) / 10 : v)).join(" \u00b7 ");
  }
  s.keys.forEach((down, i) => $("key" + (i + 1)).classList.toggle("down", !!down));
}

for (let i = 1; i <= 5; i++) {
  const b = document.createElement("button");
  b.id = "key" + i;
  b.textContent = "Key " + i;
  let down = false;
  const press = () => { if (!down) { down = true; post("/api/key/" + i + "/press"); } };
  const release = () => { if (down) { down = false; post("/api/key/" + i + "/release"); } };
  b.addEventListener("pointerdown", (e) => { e.preventDefault(); press(); });
  b.addEventListener("pointerup", release);
  b.addEventListener("pointerleave", release);
  window.addEventListener("keydown", (e) => { if (e.key === String(i) && !e.repeat) press(); });
  window.addEventListener("keyup", (e) => { if (e.key === String(i)) release(); });
  $("keys").appendChild(b);
}
$("usb-insert").onclick = () => post("/api/usb/insert");
$("usb-eject").onclick = () => post("/api/usb/eject");
$("usb-pull").onclick = () => post("/api/usb/pull");
$("power").onclick = () => post("/api/power/cycle");
$("product").onchange = (e) => post("/api/product/" + e.target.value);
$("scenario").onchange = (e) => post("/api/drive/scenario/" + e.target.value);
$("log-request").onchange = (e) => post("/api/drive/log/" + e.target.value);
$("pause").onclick = () => post(paused ? "/api/drive/resume" : "/api/drive/pause");
$("touch-calibrate").onclick = () => post("/api/touch/calibrate");

// The large model's touch panel: the mouse on either picture of the screen is a finger.
// Samples go one after the other, so that the panel gets them in the order they were made.
let touchChain = Promise.resolve(), touching = false, lastTouch = "";
function touchSample(canvas, e, pressure) {
  const x = Math.max(0, Math.min(small.width - 1, Math.floor(e.offsetX * small.width / canvas.clientWidth)));
  const y = Math.max(0, Math.min(small.height - 1, Math.floor(e.offsetY * small.height / canvas.clientHeight)));
  const path = "/api/touch/" + x + "/" + y + "/" + pressure;
  if (path === lastTouch) return;
  lastTouch = path;
  touchChain = touchChain.then(() => fetch(path, { method: "POST" })).catch(() => {});
}
for (const canvas of [$("screen"), $("big")]) {
  canvas.addEventListener("pointerdown", (e) => {
    if (!state || state.product !== "720") return;
    e.preventDefault();
    canvas.setPointerCapture(e.pointerId);
    touching = true;
    touchSample(canvas, e, 255);
  });
  canvas.addEventListener("pointermove", (e) => { if (touching) touchSample(canvas, e, 255); });
  const lift = (e) => { if (touching) { touching = false; touchSample(canvas, e, 0); } };
  canvas.addEventListener("pointerup", lift);
  canvas.addEventListener("pointercancel", lift);
}

// The live screen: the page on show as raw pixels, drawn as fast as they come.
const small = $("screen"), big = $("big");
let frames = 0, counted = 0, since = performance.now();
async function picture() {
  try {
    const r = await fetch("/api/screen.raw");
    if (r.ok) {
      const w = +r.headers.get("X-Width"), h = +r.headers.get("X-Height");
      const px = new Uint16Array(await r.arrayBuffer());
      if (small.width !== w || small.height !== h) {
        small.width = w; small.height = h; big.width = 2 * w; big.height = 2 * h;
      }
      const img = small.getContext("2d").createImageData(w, h);
      const d = img.data;
      for (let i = 0, j = 0; i < px.length; i++, j += 4) {
        const c = px[i];
        const r5 = c >> 11, g6 = (c >> 5) & 63, b5 = c & 31;
        d[j] = (r5 << 3) | (r5 >> 2); d[j + 1] = (g6 << 2) | (g6 >> 4); d[j + 2] = (b5 << 3) | (b5 >> 2); d[j + 3] = 255;
      }
      small.getContext("2d").putImageData(img, 0, 0);
      const g = big.getContext("2d");
      g.imageSmoothingEnabled = false;
      g.drawImage(small, 0, 0, big.width, big.height);
      frames++; counted++;
      small.dataset.frames = frames;
    }
  } catch (e) { $("error").textContent = "the simulator does not answer"; }
  const now = performance.now();
  if (now - since >= 1000) { $("fps").textContent = Math.round(counted * 1000 / (now - since)); counted = 0; since = now; }
  setTimeout(picture, 10);
}

async function poll() {
  try {
    const [s, f] = await Promise.all([fetch("/api/state"), fetch("/api/frames")]);
    show(await s.json());
    $("frames").textContent = (await f.text()).trim().split("\n").slice(-20).join("\n");
  } catch (e) { $("error").textContent = "the simulator does not answer"; }
  setTimeout(poll, 500);
}
// The I/O board: what it runs, its inputs (each channel in the unit the dash measures it
// in) and its outputs.
const ioInputs = [["supply", "Supply", "V"], ["tach", "Tach", "Hz"]];
for (let i = 1; i <= 14; i++) ioInputs.push(["an" + i, "AN" + i, ""]);
for (const n of ["1", "2", "3", "x"]) ioInputs.push(["sw" + n, "Switch " + n, "switch"]);
let ioLink = "on";
for (const [name, label, unit] of ioInputs) {
  const field = document.createElement("input");
  field.id = "io-" + name;
  field.type = unit === "switch" ? "checkbox" : "number";
  if (unit !== "switch") { field.step = "any"; field.min = "0"; }
  field.onchange = () => {
    const value = unit === "switch" ? (field.checked ? 1 : 0) : field.value;
    const input = field.dataset.input || name;
    fetch("/api/ioboard/input/" + input + "/" + value, { method: "POST" }).then(async (r) => {
      $("error").textContent = r.ok ? "" : (await r.text()).trim();
    });
  };
  const caption = document.createElement("span");
  caption.textContent = label;
  const unitText = document.createElement("span");
  unitText.id = "io-unit-" + name;
  unitText.textContent = unit === "switch" ? "closed" : unit;
  $("io-inputs").append(caption, field, unitText);
}
$("io-link").onclick = () => fetch("/api/ioboard/link/" + (ioLink === "on" ? "off" : "on"), { method: "POST" });

function showBoard(b) {
  ioLink = b.link;
  $("io-link").textContent = b.link === "on" ? "Pull off the link" : "Put back on the link";
  const app = b.application === 255 ? "no application" : "application v" + b.application;
  $("io-version").textContent = (b.mode === "application" ? app + " running" : "bootloader v" + b.bootloader + ", " + app) +
    (b.sectorsErased ? " \u00b7 updating: " + b.sectorsErased + " sectors erased, " + b.bytesProgrammed + " bytes written" : "") +
    (b.mode === "application" ? " \u00b7 stream mode " + b.stream : "") + (b.link === "on" ? "" : " \u00b7 off the link");
  const set = (name, value, input) => {
    const field = $("io-" + name);
    if (input) field.dataset.input = input;
    if (document.activeElement === field) return;
    if (field.type === "checkbox") field.checked = !!value; else field.value = value;
  };
  set("supply", b.inputs.supply);
  set("tach", b.inputs.tach);
  b.inputs.channels.forEach((mode, i) => {
    const ohms = mode === "R";
    set("an" + (i + 1), ohms ? b.inputs.res[i] : b.inputs.an[i], (ohms ? "res" : "an") + (i + 1));
    $("io-unit-an" + (i + 1)).textContent = ohms ? "\u2126" : mode === "G" ? "V, high gain" : "V";
  });
  ["1", "2", "3", "x"].forEach((n, i) => set("sw" + n, b.inputs.sw[i]));
  $("io-outputs").textContent = b.outputs.duty.map((d, i) => (i + 1) + ": " + d + " (" + b.outputs.volts[i] + " V)").join(" \u00b7 ") +
    " \u00b7 PWM " + b.outputs.pwmFrequency;
}

async function pollBoard() {
  try {
    const r = await fetch("/api/ioboard");
    if (r.ok) showBoard(await r.json()); else $("io-version").textContent = "no board: " + (await r.text()).trim();
  } catch (e) { $("io-version").textContent = "\u2013"; }
  setTimeout(pollBoard, 1000);
}
pollBoard();
picture();
poll();
</script>
</body>
</html>
)PAGE";
