// The simulator's web page in a real browser: the live screen, a key, the stick.
// Usage: node sim.e2e.mjs BIN_DIR
import { chromium } from "playwright-core";
import { spawn, execFileSync } from "node:child_process";
import { mkdtempSync, readFileSync, existsSync, rmSync } from "node:fs";
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
