// The simulator's web page in a real browser: the live screen, a key, the stick, a log,
// and the touch panel's calibration with the mouse.
// Usage: node sim.e2e.mjs BIN_DIR
import { chromium } from "playwright-core";
import { spawn, execFileSync } from "node:child_process";
import { mkdtempSync, readFileSync, existsSync, rmSync, writeFileSync } from "node:fs";
import { createServer } from "node:net";
import { tmpdir } from "node:os";
import { join } from "node:path";
import assert from "node:assert/strict";

const bin = process.argv[2];
const root = join(mkdtempSync(join(tmpdir(), "motordash-e2e-")), "root");
const sleep = (ms) => new Promise((r) => setTimeout(r, ms));

async function freePort() {
  return new Promise((resolve) => {
    const s = createServer();
    s.listen(0, "127.0.0.1", () => { const { port } = s.address(); s.close(() => resolve(port)); });
  });
}

async function until(what, test, ms = 10000) {
  const end = Date.now() + ms;
  while (Date.now() < end) {
    if (await test()) return;
    await sleep(50);
  }
  throw new Error("timed out waiting for " + what);
}

// A log as the dash writes it: the five header lines, then a row every 20 ms from
// `startMs` of uptime, engine speed rising and the coolant warm.
function syntheticLog(startMs, rows) {
  const names = Array.from({ length: 153 }, (_, i) => `PCM1.P${i}.Column${i + 2}`);
  names.splice(0, 1, "PCM1.P9.RPM");
  names.splice(23, 1, "PCM1.P19.Coolant_Temp");
  const units = names.map((_, i) => (i === 0 ? "RPM" : i === 23 ? "C" : "Num"));
  let text = "Interval (ms),1\n," + names.join(",") + "\n," + names.map(() => "Range::0 100, ").join("") + "\n" +
    "DateTime" + ",Value".repeat(153) + "\nseconds," + units.join(",") + "\n";
  const two = (n) => String(n).padStart(2, "0");
  for (let r = 0; r < rows; r++) {
    const ms = startMs + 20 * r;
    const stamp = `2000-01-${two(Math.floor(ms / 86400000) + 1)}::${two(Math.floor(ms / 3600000) % 24)}:` +
      `${two(Math.floor(ms / 60000) % 60)}:${two(Math.floor(ms / 1000) % 60)}.${String(ms % 1000).padStart(3, "0")}`;
    const values = names.map((_, i) => (i === 0 ? 800 + 15 * r : i === 23 ? 85 : i).toFixed(2));
    text += stamp + "," + values.join(",") + "\n";
  }
  return text;
}

const read = (rel) => { try { return readFileSync(join(root, rel), "utf8"); } catch { return null; } };

const port = await freePort();
const url = `http://127.0.0.1:${port}/`;
const sim = spawn(join(bin, "motordash-sim"), ["run", "--root", root, "--port", String(port)], { stdio: ["ignore", "pipe", "pipe"] });
let output = "";
sim.stdout.on("data", (d) => { output += d; });
sim.stderr.on("data", (d) => { output += d; });
const ended = new Promise((resolve) => sim.on("exit", (code, signal) => resolve({ code, signal })));

let browser;
try {
  await until("the simulator's API", async () => {
    try { return (await fetch(url + "api/state")).ok; } catch { return false; }
  }, 20000);

  browser = await chromium.launch({
    executablePath: "/usr/bin/chromium",
    headless: true,
    args: ["--headless", "--no-sandbox", "--disable-gpu", "--disable-quic", "--no-first-run",
      "--disable-background-networking", "--disable-component-update", "--disable-sync"],
  });
  const page = await browser.newPage();
  await page.goto(url);

  // The live screen: pictures keep coming, at the panel's true size.
  const frames = async () => Number(await page.locator("#screen").getAttribute("data-frames"));
  await until("the first pictures", async () => (await frames()) >= 5);
  const f0 = await frames(), t0 = Date.now();
  await sleep(2000);
  const rate = ((await frames()) - f0) * 1000 / (Date.now() - t0);
  console.log(`live screen: ${rate.toFixed(1)} pictures a second`);
  assert.ok(rate >= 15, `pictures a second: ${rate}`);
  assert.equal(await page.locator("#screen").getAttribute("width"), "320");
  assert.equal(await page.locator("#big").getAttribute("width"), "640");

  // A key: held down, its line reads pressed (0); let go, released (1).
  const key = page.locator("#key1");
  const box = await key.boundingBox();
  await page.mouse.move(box.x + box.width / 2, box.y + box.height / 2);
  await page.mouse.down();
  await until("key 1's line pressed", () => read("sys/class/gpio/gpio68/value") === "0\n");
  await page.mouse.up();
  await until("key 1's line released", () => read("sys/class/gpio/gpio68/value") === "1\n");

  // The stick: inserted, ejected (the dash takes the scripts' answer), pulled.
  await page.click("#usb-insert");
  // The quad page asks after the stick on every frame and may have taken the info file already.
  await until("the stick mounted", () => existsSync(join(root, "media/disk_sda1")) && [null, "disk_sda1"].includes(read("media/usbinfo.txt")));
  await until("the page to show it", async () => (await page.textContent("#stick")) === "inserted");
  await page.click("#usb-eject");
  await until("the page to show the eject", async () => (await page.textContent("#stick")) === "ejected");
  await until("the dash to take the eject answer", () => read("app/event/app_command") === null);
  await page.click("#usb-pull");
  await until("the stick gone", () => !existsSync(join(root, "media/disk_sda1")));
  await until("the page to show it", async () => (await page.textContent("#stick")) === "none");

  // The frames the dash sends include its settings frame.
  const sent = await (await fetch(url + "api/frames")).text();
  assert.match(sent, /can0 131#[0-9A-F]{16}/);

  // A log on the stick, continued after a power cycle (a second header, the clock from
  // the start again) and with a row still being written: the viewer lists it, plots
  // engine speed by default, offers both runs and adds a column chosen by name. The
  // engine controller's request is switched off, so that the dash writes no log of its own.
  await page.selectOption("#log-request", "off");
  await until("the request off", async () => (await (await fetch(url + "api/state")).json()).ecu.logging === false);
  await page.click("#usb-insert");
  await until("the stick mounted", () => existsSync(join(root, "media/disk_sda1")));
  writeFileSync(join(root, "media/disk_sda1/first run.csv"),
    syntheticLog(0, 400) + syntheticLog(2000, 300) + "2000-01-01::00:00:08.020,12");
  await page.click("#log-files tr >> text=first run.csv");
  await until("the plot", async () => (await page.locator("#log-chart canvas").count()) > 0);
  assert.match(await page.textContent("#log-info"), /^700 rows, .*2 runs/);
  assert.equal(await page.locator("#log-run option").count(), 2);
  const legend = async () => page.locator("#log-chart .u-legend .u-label").allTextContents();
  assert.deepEqual(await legend(), ["Time", "PCM1.P9.RPM"]);
  await page.fill("#log-filter", "coolant");
  await page.locator("#log-columns label:visible").click();
  await until("the second series", async () => (await legend()).length === 3);
  assert.deepEqual(await legend(), ["Time", "PCM1.P9.RPM", "PCM1.P19.Coolant_Temp"]);
  // Drawn: the first series' colour covers a good part of the plot.
  const lit = await page.evaluate(() => {
    const c = document.querySelector("#log-chart canvas");
    const d = c.getContext("2d").getImageData(0, 0, c.width, c.height).data;
    let n = 0;
    for (let i = 0; i < d.length; i += 4) if (d[i] > 200 && d[i + 1] > 140 && d[i + 1] < 210 && d[i + 2] < 80) n++;
    return n;
  });
  assert.ok(lit > 300, `pixels of the engine speed line: ${lit}`);
  assert.equal(await page.getAttribute("#log-download", "href"), "/api/logs/first%20run.csv");

  // The large model's touch panel, calibrated with the mouse: each cross clicked where it
  // appears on the live screen, and the dash writes its calibration file.
  await page.setViewportSize({ width: 2400, height: 1400 });
  await page.selectOption("#product", "720");
  await until("the large screen", async () => (await page.locator("#screen").getAttribute("width")) === "800");
  await page.click("#touch-calibrate");
  const screen = page.locator("#screen");
  // Something lit in the rectangle: the dash's own screens stay in the top left 320 x 240,
  // so a lit title right of that is the calibration's, and a lit centre is its cross.
  const shows = async (x, y, w = 1, h = 1) => page.evaluate(([x, y, w, h]) => {
    const d = document.querySelector("#screen").getContext("2d").getImageData(x, y, w, h).data;
    return d.some((v, i) => i % 4 !== 3 && v > 0);
  }, [x, y, w, h]);
  for (const [x, y] of [[50, 50], [760, 50], [760, 440], [50, 440], [400, 240]]) {
    await until(`the cross at ${x},${y}`, async () => (await shows(330, 15, 140, 35)) && (await shows(x, y)));
    await screen.scrollIntoViewIfNeeded();
    const b = await screen.boundingBox();
    const at = (dx) => [b.x + (x + dx + 0.5) * b.width / 800, b.y + (y + 0.5) * b.height / 480];
    await page.mouse.move(...at(-1));
    await page.mouse.down();
    await page.mouse.move(...at(1));
    await page.mouse.move(...at(0));
    await page.mouse.up();
  }
  await until("the calibration file", () => /^-?\d+( -?\d+){6} 800 480$/.test(read("etc/pointercal") ?? ""));
  console.log("browser test passed");
} catch (e) {
  console.error(e.message);
  console.error("--- simulator output ---\n" + output);
  process.exitCode = 1;
} finally {
  if (browser) await browser.close();
  sim.kill("SIGTERM");
  const { code, signal } = await Promise.race([ended, sleep(10000).then(() => ({ code: "hung" }))]);
  if (code !== 0) {
    console.error(`simulator ended with ${code ?? signal}`);
    process.exitCode = 1;
  }
  // No process of the simulator may outlive it.
  let left = "";
  try { left = execFileSync("pgrep", ["-f", root], { encoding: "utf8" }); } catch { left = ""; }
  if (left.trim()) {
    console.error("left behind:\n" + left);
    process.exitCode = 1;
  }
  rmSync(join(root, ".."), { recursive: true, force: true });
}
