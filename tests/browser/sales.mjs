// The sales side in a real browser: Debian's chromium, headless, driven by playwright-core,
// against a real `kontavo serve` in a fresh French business. A screenshot of each screen goes to
// the output folder. Usage: node sales.mjs KONTAVO_BINARY OUTPUT_FOLDER
import { execFileSync } from 'node:child_process';
import { mkdtempSync, mkdirSync, rmSync } from 'node:fs';
import { tmpdir } from 'node:os';
import { join } from 'node:path';
import assert from 'node:assert/strict';
import { chromium } from 'playwright-core';
import { startKontavoServer } from './serve.mjs';

const [kontavo, output] = process.argv.slice(2);
mkdirSync(output, { recursive: true });
const home = mkdtempSync(join(tmpdir(), 'kontavo-sales-'));
const env = { ...process.env, KONTAVO_HOME: home, LC_ALL: 'fr_FR.UTF-8', KONTAVO_COUNTRY: 'FR' };
const run = (args, input) => execFileSync(kontavo, args, { env, input, encoding: 'utf8' });
const json = (args) => JSON.parse(run(['--json', ...args]));

const today = new Date();
const pad = (n) => String(n).padStart(2, '0');
const isoDate = (d) => `${d.getFullYear()}-${pad(d.getMonth() + 1)}-${pad(d.getDate())}`;
const lastYear = today.getFullYear() - 1;

run(['init', '--name', 'Boulangerie Martin SARL']);
run(['user', 'add', 'colette@example.fr', '--name', 'Colette', '--user', '--profile', 'Boulangerie Martin SARL',
     '--password-stdin'], 'colette12\n');
run(['user', 'add', 'victor@example.fr', '--name', 'Victor', '--viewer', '--profile', 'Boulangerie Martin SARL',
     '--password-stdin'], 'victor12\n');
run(['item', 'add', 'PAIN', '--description', 'Pain de campagne', '--price', '2.50']);

const { server, base } = await startKontavoServer(kontavo, env);
const browser = await chromium.launch({ executablePath: '/usr/bin/chromium', args: ['--no-sandbox'] });
let shot = 0;
const snap = (page, name) => page.screenshot({ path: join(output, `${String(++shot).padStart(2, '0')}-${name}.png`), fullPage: true });

async function logon(page, email, password) {
  await page.goto(base + 'logon');
  await page.fill('[id="101"]', email);
  await page.fill('[id="102"]', password);
  await page.click('input[name=submit]');
  await page.waitForURL(/\/(main|chooseprofile)$/);
}

// Makes a change in a period list's filter bar and waits until the list it showed is replaced.
async function refiltered(page, change) {
  await page.evaluate(() => document.querySelector('#listblock table').setAttribute('data-stale', '1'));
  await change();
  await page.waitForFunction(() => !document.querySelector('#listblock table[data-stale]'));
}

try {
  const context = await browser.newContext({ viewport: { width: 1280, height: 900 } });
  const page = await context.newPage();
  const problems = [];
  page.on('pageerror', (error) => problems.push(error.message));
  await logon(page, 'colette@example.fr', 'colette12');

  // ---- The period of the lists --------------------------------------------------------------
  run(['customer', 'add', 'OLD', 'Name=Ancien client']);
  run(['invoice', 'new', '--customer', 'OLD', '--date', `${lastYear}-02-10`, '--line', 'PAIN||4||']);
  await page.goto(base + 'invoicelist');
  assert.match(await page.locator('#listblock').innerText(), /Aucune facture sur la période\./);
  assert.equal(await page.locator('select[name=prd]').inputValue(), 'fy');
  await snap(page, 'invoicelist-this-year');
  await refiltered(page, () => page.selectOption('select[name=prd]', 'all'));
  assert.match(await page.locator('#listblock').innerText(), /1 document\(s\)/);
  assert.equal(await page.locator('input[name=from]').inputValue(), '');
  assert.match(page.url(), /invoicelist\?prd=all&/);
  await snap(page, 'invoicelist-all-dates');
  await refiltered(page, () => page.fill('input[name=from]', `${lastYear}-03-01`));
  assert.equal(await page.locator('select[name=prd]').inputValue(), 'custom');
  assert.match(await page.locator('#listblock').innerText(), /Aucune facture/);
  // Reloading shows what was shown: the address followed the refilters.
  await page.reload();
  assert.equal(await page.locator('input[name=from]').inputValue(), `${lastYear}-03-01`);
  // The period dialog: a named period fills the dates; OK shows the list so filtered.
  await page.click('a:has-text("Période…")');
  await page.waitForURL(/invoicelistperiod/);
  const filled = page.waitForResponse((response) => response.url().endsWith('prdselchange'));
  await page.selectOption('[id="101"]', 'py');
  await filled;
  assert.equal(await page.locator('[id="102"]').inputValue(), `${lastYear}-01-01`);
  await page.selectOption('[id="104"]', 'OLD');
  await snap(page, 'invoicelistperiod');
  await page.click('input[name=submit][value="Afficher"]');
  await page.waitForURL(/invoicelist\?prd=py/);
  assert.match(await page.locator('#listblock').innerText(), /1 document\(s\)/);
  await snap(page, 'invoicelist-last-year');

  assert.deepEqual(problems, [], 'no script errors on the pages');
  console.log(`browser test passed; screenshots in ${output}`);
} finally {
  await browser.close();
  server.kill('SIGTERM');
  await new Promise((resolve) => server.on('exit', resolve));
  rmSync(home, { recursive: true, force: true });
}
