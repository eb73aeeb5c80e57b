// Vehicles and mileage in a real browser, as a colleague (a web user, not an administrator) keeps
// them: from the report centre to the vehicles, a new vehicle, a trip typed by odometer (a
// distance that disagrees refused on its field), the mileage log, and the allowance of the
// kilometric scale for last year. A screenshot of each step goes to the output folder.
// Usage: node mileage.mjs KONTAVO_BINARY OUTPUT_FOLDER
import { execFileSync } from 'node:child_process';
import { mkdtempSync, mkdirSync, rmSync } from 'node:fs';
import { tmpdir } from 'node:os';
import { join } from 'node:path';
import assert from 'node:assert/strict';
import { startKontavoServer, stopKontavoServer, logOn, launchBrowser, screenshotTaker, openPage, press } from './serve.mjs';

const [kontavo, output] = process.argv.slice(2);
mkdirSync(output, { recursive: true });
const home = mkdtempSync(join(tmpdir(), 'kontavo-browser-mileage-'));
const env = { ...process.env, KONTAVO_HOME: home };
const run = (args, input) => execFileSync(kontavo, ['--yes', ...args], { env, input, encoding: 'utf8' });

run(['record', 'set', 'Misc', 'Company', 'Name=Atelier SARL']);
run(['account', 'defaults']);
run(['user', 'add', 'eve@example.fr', '--name', 'Ève Comptable', '--user', '--profile', 'Atelier SARL', '--password-stdin'], 'evesecret\n');
const last = new Date().getFullYear() - 1;

const { server, base } = await startKontavoServer(kontavo, env);
const browser = await launchBrowser();
const snap = screenshotTaker(output, 'mileage-');

try {
  const { page, problems } = await openPage(browser);

  await logOn(page, base, 'eve@example.fr', 'evesecret');

  // From the report centre to the vehicles, then a new one.
  await page.click('a.navtab:has-text("Rapports")');
  await page.waitForURL(/reports$/);
  await page.click('a[href="vehiclelist"]');
  await page.waitForURL(/vehiclelist$/);
  assert.match(await page.locator('#vehicles').innerText(), /Aucun véhicule/);
  await page.click('#newvehicle');
  await page.waitForURL(/vehicleprop/);
  await page.fill('[id="101"]', 'Clio');
  await page.fill('[id="102"]', 'Clio de Paul');
  await page.fill('[id="103"]', 'AB-123-CD');
  await page.selectOption('[id="104"]', 'car');
  await page.fill('[id="105"]', '5');
  await snap(page, 'vehicle');
  await press(page, '  OK  ');
  await page.waitForURL(/vehiclelist$/);
  assert.match(await page.locator('#vehicles').innerText(), /Clio de Paul \(AB-123-CD\), voiture 5 CV/);
  await snap(page, 'vehicles');

  // Two trips of last year: one by odometer (first with a distance that disagrees), one by distance.
  await page.click('a:has-text("Nouveau trajet")');
  await page.waitForURL(/vehiclemileageprop\?vehicle=Clio/);
  await page.fill('[id="202"]', `${last}-03-14`);
  await page.fill('[id="203"]', 'Chantier Dupont');
  await page.fill('[id="204"]', 'Lyon');
  await page.fill('[id="205"]', 'Grenoble');
  await page.fill('[id="206"]', '100');
  await page.fill('[id="207"]', '42000');
  await page.fill('[id="208"]', '47000');
  await press(page, '  OK  ');
  await page.waitForSelector('#errorTag');
  assert.match(await page.locator('#errorTag').innerText(), /ne correspond pas aux compteurs \(5000 km\)/);
  await snap(page, 'trip-refused');
  await page.fill('[id="206"]', '');
  await press(page, '  OK  ');
  await page.waitForURL(/vehiclemileagelist\?vehicle=Clio/);
  await page.click('#newtrip');
  await page.waitForURL(/vehiclemileageprop/);
  await page.fill('[id="202"]', `${last}-10-02`);
  await page.fill('[id="203"]', 'Salon professionnel');
  await page.fill('[id="206"]', '3000');
  await press(page, '  OK  ');
  await page.waitForURL(/vehiclemileagelist\?vehicle=Clio/);
  const log = await page.locator('#trips').innerText();
  assert.match(log, /Chantier Dupont\s+Lyon → Grenoble\s+42000 → 47000\s+5000/);
  assert.equal(await page.locator('#totalkm').innerText(), '8000');
  await snap(page, 'log');

  // The scales in force, a table a year, with the form for a new year's.
  await page.click('a:has-text("Véhicules")');
  await page.waitForURL(/vehiclelist$/);
  await page.click('a[href="mileagescale"]');
  await page.waitForURL(/mileagescale$/);
  assert.match(await page.locator('#scale2024').innerText(), /voiture 5 CV\s+jusqu'à 5000 km : d × 0.636/);
  await snap(page, 'scales');
  await page.goto(base + 'vehiclemileagelist?vehicle=Clio');

  // The allowance of last year: 8,000 km of a 5 CV, (8 000 × 0,357) + 1 395.
  await page.click('a:has-text("Indemnités kilométriques")');
  await page.waitForURL(/mileagereports/);
  assert.equal(await page.inputValue('[id="201"]'), 'y');  // the calendar year, as the scale counts
  await page.selectOption('[id="201"]', 'py');
  await page.waitForFunction((y) => document.getElementById('202').value === `${y}-01-01`, last);
  await page.waitForFunction(() => /Le rapport compte \d+ lignes/.test(document.getElementById('itemcount').textContent));
  await snap(page, 'chooser');
  await press(page, 'Afficher le rapport');
  await page.waitForURL(/generatereport\?report=mileage/);
  const table = await page.locator('table.report').innerText();
  assert.match(table, /d × 0.357 \+ \$1,395\s+8000\s+\D*4\D?251[.,]00/);
  assert.match(table, /Total des indemnités\s+8000\s+\D*4\D?251[.,]00/);
  await snap(page, 'allowance');

  assert.deepEqual(problems, [], 'no script errors on the pages');
  console.log(`mileage browser test passed; screenshots in ${output}`);
} finally {
  await browser.close();
  await stopKontavoServer(server);
  rmSync(home, { recursive: true, force: true });
}
