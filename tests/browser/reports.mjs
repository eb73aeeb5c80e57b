// The report pages in a real browser, as a colleague (a web user, not an administrator) uses
// them: the profit and loss for a chosen period (a named period first, then dates typed), a
// customer's statement, a budget against actual, and the main page's charts. A screenshot of each
// step goes to the output folder. Usage: node reports.mjs KONTAVO_BINARY OUTPUT_FOLDER
import { execFileSync } from 'node:child_process';
import { mkdtempSync, mkdirSync, rmSync } from 'node:fs';
import { tmpdir } from 'node:os';
import { join } from 'node:path';
import assert from 'node:assert/strict';
import { startKontavoServer, stopKontavoServer, logOn, launchBrowser, screenshotTaker, openPage, press } from './serve.mjs';

const [kontavo, output] = process.argv.slice(2);
mkdirSync(output, { recursive: true });
const home = mkdtempSync(join(tmpdir(), 'kontavo-browser-reports-'));
const env = { ...process.env, KONTAVO_HOME: home };
const run = (args, input) => execFileSync(kontavo, ['--yes', ...args], { env, input, encoding: 'utf8' });

run(['record', 'set', 'Misc', 'Company', 'Name=Atelier SARL']);
run(['account', 'defaults']);
run(['customer', 'add', 'C1', 'Name=Dupont SARL']);
const year = new Date().getFullYear();
const last = year - 1;
run(['journal', 'add', '--date', `${last}-01-05`, '--type', '0', '--ref', 'CAP', '--desc', 'Capital', 'dr:1110:20000', 'cr:3010:20000']);
run(['invoice', 'new', '--customer', 'C1', '--date', `${last}-03-10`, '--untaxed', '--line', '|Conseil|1|1500|Aucun|']);
run(['invoice', 'new', '--customer', 'C1', '--date', `${last}-09-20`, '--untaxed', '--line', '|Formation|2|900|Aucun|']);
run(['payment', 'add', '--customer', 'C1', '--amount', '1500', '--date', `${last}-04-02`, '--apply', '1=1500', '--account', 'Compte-chèque']);
run(['journal', 'add', '--date', `${last}-02-28`, '--type', '0', '--ref', 'LOY', '--desc', 'Loyer', 'dr:6410:800', 'cr:1110:800']);
run(['journal', 'add', '--date', `${year}-01-31`, '--type', '0', '--ref', 'LOY2', '--desc', 'Loyer', 'dr:6410:850', 'cr:1110:850']);
run(['budget', 'add', 'Prévisions', '--year', String(last), '6410=9600', '4110=30000']);
run(['user', 'add', 'eve@example.fr', '--name', 'Ève Comptable', '--user', '--profile', 'Atelier SARL', '--password-stdin'], 'evesecret\n');

const { server, base } = await startKontavoServer(kontavo, env);
const browser = await launchBrowser();
const snap = screenshotTaker(output, 'reports-');

try {
  const { page, problems } = await openPage(browser);

  await logOn(page, base, 'eve@example.fr', 'evesecret');

  // The main page draws the year's charts, with their figures for screen readers.
  await page.goto(base + 'main');
  assert.equal(await page.locator('svg.chart').count(), 2);
  assert.match(await page.locator('table.charttable').first().innerText(), /janv\./);
  await snap(page, 'main-charts');

  // The report centre, then the profit and loss: last fiscal year by its name, the dates filled in.
  await page.click('a.navtab:has-text("Rapports")');
  await page.waitForURL(/reports$/);
  await snap(page, 'centre');
  await page.click('a[href="reportredirect?report=pl"]');
  await page.waitForURL(/reportperiod\?report=pl/);
  await page.selectOption('[id="201"]', 'pfy');
  await page.waitForFunction((y) => document.getElementById('202').value === `${y}-01-01`, last);
  await page.waitForFunction(() => /Le rapport compte \d+ lignes/.test(document.getElementById('itemcount').textContent));
  await snap(page, 'pl-chooser');
  await press(page, 'Afficher le rapport');
  await page.waitForURL(/generatereport\?report=pl/);
  let table = await page.locator('table.report').innerText();
  assert.match(table, new RegExp(`Du ${last}-01-01 au ${last}-12-31`));
  assert.match(table, /Bénéfice net\s+\D*2\D?500[.,]00/);  // 1,500 + 1,800 - 800
  await snap(page, 'pl-last-year');

  // Dates typed by hand make the period "Dates choisies"; a wrong date is refused on its field.
  await page.click('a:has-text("Modifier les choix")');
  await page.waitForURL(/reportperiod/);
  await page.fill('[id="202"]', `${last}-02-01`);
  await page.fill('[id="203"]', `${last}-02-30`);
  await page.dispatchEvent('[id="203"]', 'change');
  assert.equal(await page.inputValue('[id="201"]'), 'custom');
  await press(page, 'Afficher le rapport');
  await page.waitForSelector('#errorTag');
  assert.match(await page.locator('#errorTag').innerText(), /Date invalide/);
  await snap(page, 'pl-refused');
  await page.fill('[id="203"]', `${last}-03-31`);
  await press(page, 'Afficher le rapport');
  await page.waitForURL(/generatereport\?report=pl/);
  table = await page.locator('table.report').innerText();
  assert.match(table, /Bénéfice net\s+\D*700[.,]00/);  // March's 1,500 less February's rent
  await snap(page, 'pl-chosen-period');

  // A customer's statement: chosen in its page, the balance carried and aged.
  await page.goto(base + 'reports');
  await page.click('a[href="reportredirect?report=statement"]');
  await page.waitForURL(/customstatement/);
  await page.selectOption('[id="204"]', 'C1');
  await page.selectOption('[id="201"]', 'pfy');
  await page.waitForFunction((y) => document.getElementById('203').value === `${y}-12-31`, last);
  await press(page, 'Afficher le rapport');
  await page.waitForURL(/generateStatement/);
  table = await page.locator('table.report').innerText();
  assert.match(table, /Facture 1[\s\S]*Paiement 1[\s\S]*Facture 2/);
  assert.match(table, new RegExp(`Solde au ${last}-12-31\\s+${last}-12-31\\s+\\D*1\\D?800[.,]00`));
  await snap(page, 'statement');

  // A budget report: the budget chosen fills its fiscal year.
  await page.goto(base + 'reports');
  await page.click('a[href="reportredirect?report=budget"]');
  await page.waitForURL(/budgetreports/);
  await page.selectOption('[id="206"]', 'Prévisions');
  await page.waitForFunction((y) => document.getElementById('202').value === `${y}-01-01`, last);
  await press(page, 'Afficher le rapport');
  await page.waitForURL(/generatereport\?report=budget/);
  table = await page.locator('table.report').innerText();
  assert.match(table, /Total 6410 Loyer\s+\D*9\D?600[.,]00\s+\D*800[.,]00\s+-\D*8\D?800[.,]00\s+-91,7 %/);
  await snap(page, 'budget');

  assert.deepEqual(problems, [], 'no script errors on the pages');
  console.log(`reports browser test passed; screenshots in ${output}`);
} finally {
  await browser.close();
  await stopKontavoServer(server);
  rmSync(home, { recursive: true, force: true });
}
