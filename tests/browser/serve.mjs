// What the browser tests share: a free loopback port, `kontavo serve` started on one of its own,
// the stop of the service that `kontavo desk` started, the browser, a page that collects its
// script errors, the press of a form's button and the numbered screenshots.
import { spawn } from 'node:child_process';
import { createServer, createConnection } from 'node:net';
import { join } from 'node:path';
import { chromium } from 'playwright-core';

export function freeLoopbackPort() {
  return new Promise((resolve) => {
    const probe = createServer().listen(0, '127.0.0.1', () => {
      const { port } = probe.address();
      probe.close(() => resolve(port));
    });
  });
}

// Stops the service of the application folder home through its control socket (the engine's
// stop control: code 5, no data).
export function stopDeskService(home) {
  return new Promise((resolve) => {
    const socket = createConnection(join(home, 'kontavod'));
    socket.on('error', resolve);
    socket.on('connect', () => {
      const message = Buffer.alloc(8);
      message.writeInt32LE(5, 0);
      message.writeUInt32LE(0, 4);
      socket.end(message);
    });
    socket.on('data', () => {});
    socket.on('close', resolve);
  });
}

// Starts the service with env (its KONTAVO_HOME) and waits until it listens; returns the child
// process and the base address ("http://127.0.0.1:PORT/").
export async function startKontavoServer(kontavo, env) {
  const port = await freeLoopbackPort();
  const server = spawn(kontavo, ['serve', '--port', String(port)], { env, stdio: ['ignore', 'pipe', 'inherit'] });
  await new Promise((resolve, reject) => {
    let seen = '';
    server.stdout.on('data', (chunk) => {
      seen += chunk;
      if (seen.includes('http://')) resolve();
    });
    server.on('exit', () => reject(new Error('kontavo serve ended: ' + seen)));
  });
  return { server, base: `http://127.0.0.1:${port}/` };
}

// Stops the service startKontavoServer started and waits until it has ended.
export function stopKontavoServer(server) {
  if (server.exitCode !== null || server.signalCode !== null) return Promise.resolve();
  return new Promise((resolve) => {
    server.on('exit', resolve);
    server.kill('SIGTERM');
  });
}

// Logs a colleague on through the logon page, choosing the first business when asked.
export async function logOn(page, base, email, password) {
  await page.goto(base + 'logon');
  await page.fill('[id="101"]', email);
  await page.fill('[id="102"]', password);
  await page.click('input[name=submit]');
  await page.waitForURL((url) => !url.pathname.endsWith('/logon'));
  if (page.url().endsWith('/chooseprofile')) {
    await press(page, '  OK  ');
    await page.waitForURL(base + 'main');
  }
}

// Debian's chromium, headless.
export const launchBrowser = () => chromium.launch({ executablePath: '/usr/bin/chromium', args: ['--no-sandbox'] });

// A screenshot taker for one flow: files prefixNN-name.png in output, numbered in the order taken.
export function screenshotTaker(output, prefix) {
  let shot = 0;
  return (page, name) =>
    page.screenshot({ path: join(output, `${prefix}${String(++shot).padStart(2, '0')}-${name}.png`), fullPage: true });
}

// A page in a new context of browser (a 1280×900 window unless options say otherwise, options as
// for browser.newContext), whose script errors are pushed onto problems.
export async function openPage(browser, options = {}, problems = []) {
  const context = await browser.newContext({ viewport: { width: 1280, height: 900 }, ...options });
  const page = await context.newPage();
  page.on('pageerror', (error) => problems.push(error.message));
  return { context, page, problems };
}

// Clicks the form's button captioned text.
export const press = (page, text) => page.click(`input[name=submit][value="${text}"]`);
