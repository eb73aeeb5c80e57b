// The desk in a real browser (Debian's chromium, headless, driven by playwright-core): from an
// empty application folder, `kontavo desk --no-open` starts the service and prints the one-time
// link; the browser follows it into the start wizard, sets the business up page by page, lands
// on the main page with its chart of accounts, and manages the businesses. A screenshot of each
// page goes to the output folder. Usage: node desk.mjs KONTAVO_BINARY OUTPUT_FOLDER
import { execFileSync } from 'node:child_process';
import { mkdtempSync, mkdirSync, rmSync, existsSync } from 'node:fs';
import { tmpdir } from 'node:os';
import { join } from 'node:path';
import assert from 'node:assert/strict';
import { freeLoopbackPort, stopDeskService, launchBrowser, screenshotTaker, openPage } from './serve.mjs';

const [kontavo, output] = process.argv.slice(2);
mkdirSync(output, { recursive: true });
const home = mkdtempSync(join(tmpdir(), 'kontavo-desk-'));
const env = { ...process.env, KONTAVO_HOME: home, LANG: 'fr_FR.UTF-8', LC_ALL: '' };
delete env.DISPLAY;
delete env.WAYLAND_DISPLAY;
const run = (args, input) => execFileSync(kontavo, args, { env, input, encoding: 'utf8' });

const port = await freeLoopbackPort();
run(['web', 'port', String(port)]);
const base = `http://127.0.0.1:${port}/`;


const browser = await launchBrowser();
const snap = screenshotTaker(output, '');
const errorText = (page) => page.locator('#errorTag').innerText();

try {
  const link = run(['desk', '--no-open']).trim();
  assert.match(link, new RegExp(`^${base}desk\\?token=[0-9a-f]{32}$`));
  const { context, page, problems } = await openPage(browser, { viewport: { width: 1280, height: 800 } });
  const next = (text = 'Suivant >') => page.click(`input[name=submit][value="${text}"]`);
  const expectError = async (pattern) => {
    await page.waitForFunction(() => document.getElementById('errorTag') && !document.getElementsByName('submit')[0].disabled);
    assert.match(await errorText(page), pattern);
  };

  // The business has no name yet: the desk link leads into the start wizard.
  await page.goto(link);
  await page.waitForURL(base + 'startwizard');
  assert.match(await page.locator('td.headeruser').innerText(), /Connecté sous Poste de travail/);
  await snap(page, 'wizard-country');
  await page.selectOption('[id="101"]', 'FR');
  await next();
  await page.waitForURL(/step=2/);
  assert.equal(await page.inputValue('[id="204"]'), '12-31');
  await next();
  await expectError(/Veuillez entrer le nom de l'entreprise\./);
  await snap(page, 'wizard-company-refused');
  await page.fill('[id="201"]', 'Boulangerie Martin');
  await page.fill('[id="202"]', '3 place du Marché\n69002 Lyon');
  await page.fill('[id="203"]', 'Claire Martin');
  // The legal mentions of the invoices, checked as the company settings check them.
  await page.fill('[id="216"]', 'SARL');
  await page.fill('[id="218"]', '12345');
  await next();
  await expectError(/Le numéro SIREN doit compter 9 chiffres\./);
  assert.equal(await page.evaluate(() => document.activeElement.id), '218');
  await page.fill('[id="218"]', '123456789');
  await page.fill('[id="221"]', 'FR32123456789');
  await snap(page, 'wizard-company-legal');
  await next();
  await page.waitForURL(/step=3/);
  assert.equal(await page.inputValue('[id="311"]'), '€');
  assert.equal(await page.inputValue('[id="312"]'), 'Euro');
  await snap(page, 'wizard-currency');
  // Going back keeps what was typed.
  await next('< Précédent');
  await page.waitForURL(/step=2/);
  assert.equal(await page.inputValue('[id="201"]'), 'Boulangerie Martin');
  await next();
  await page.waitForURL(/step=3/);
  await next();
  await page.waitForURL(/step=4/);
  await page.check('[id="402"]');
  await next();
  await expectError(/Veuillez entrer un solde initial pour le compte-chèque\./);
  await page.fill('[id="403"]', '1500.50');
  await snap(page, 'wizard-accounting');
  await next();
  await page.waitForURL(/step=5/);
  await page.check('[id="502"]');
  await snap(page, 'wizard-usage');
  await next('Terminer');

  // The main page of the new business, with its default chart of accounts.
  await page.waitForURL(base + 'main');
  assert.equal(await page.locator('h1.companyname').innerText(), 'Boulangerie Martin');
  // The chart's groups are closed: the bank account shows once its group is clicked open.
  const bankGroup = page.locator('details.accountgroup', { has: page.locator('td', { hasText: /^512000$/ }) });
  assert.equal(await bankGroup.count(), 1);
  assert.equal(await bankGroup.locator('td', { hasText: /^512000$/ }).isVisible(), false);
  await snap(page, 'main-chart-closed');
  await bankGroup.locator('summary').click();
  const chart = await bankGroup.innerText();
  assert.match(chart, /512000\s+Banque/);
  assert.match(chart, /1 500,50 €/);
  await snap(page, 'main-with-chart');
  assert.equal(run(['record', 'get', 'Misc', 'Company', 'Name']).trim(), 'Boulangerie Martin');
  assert.equal(run(['record', 'get', 'Misc', 'Company', 'SIREN']).trim(), '123456789');
  assert.equal(run(['record', 'get', 'Misc', 'Company', 'VATNumber']).trim(), 'FR32123456789');
  assert.equal(run(['record', 'get', 'Misc', 'Invoice', 'QuantityColumnTitle']).trim(), 'Hres');

  // A second business through the same wizard, then opened and deleted again.
  await page.click('div.navtabs a:has-text("Entreprises")');
  await page.waitForURL(base + 'businesslist');
  await page.click('text=Ajouter une entreprise');
  await page.waitForURL(/startwizard\?mode=add/);
  await page.selectOption('[id="101"]', 'BE');
  await next();
  await page.fill('[id="201"]', 'Boulangerie Martin');
  await next();
  await expectError(/Le nom de l'entreprise \(raison sociale\) existe déjà\./);
  await page.fill('[id="201"]', 'Martin Bruxelles');
  await next();
  await page.waitForURL(/step=3/);
  for (let step = 3; step < 5; step++) {
    await next();
    await page.waitForURL(new RegExp(`step=${step + 1}`));
  }
  await next('Terminer');
  await page.waitForURL(base + 'businesslist');
  assert.match(await page.locator('table.hltbl').innerText(), /Martin Bruxelles\s+MultiBus\/1/);
  assert.equal(run(['--business', '1', 'record', 'get', 'Misc', 'Options', 'CountryCode']).trim(), 'BE');
  await snap(page, 'businesslist');
  await page.click('a[href="businessopen?id=1"]');
  await page.waitForURL(base + 'main');
  assert.equal(await page.locator('h1.companyname').innerText(), 'Martin Bruxelles');
  await page.goto(base + 'businesslist');
  await page.click('a[href="businessdelete?id=1"]');
  await page.waitForURL(/businessdelete/);
  assert.match(await page.locator('td.dlgstatic').innerText(), /Voulez-vous vraiment supprimer la devise "Martin Bruxelles" complètement/);
  await snap(page, 'businessdelete');
  await next('Oui, supprimer');
  await page.waitForURL(base + 'businesslist');
  assert.doesNotMatch(await page.locator('table.hltbl').innerText(), /Martin Bruxelles/);
  assert.equal(existsSync(join(home, 'Shared', 'MultiBus', '1')), false);

  // Every link of the product answers, and every "Aide" link leads to a help page.
  const seen = new Set();
  const queue = ['main', 'logon', 'lostpassword'];
  const helpPages = new Set();
  const leaves = /logoff|delete|businessopen|desk\?/;
  while (queue.length > 0) {
    const path = queue.shift();
    if (seen.has(path)) continue;
    seen.add(path);
    const response = await context.request.get(base + path, { maxRedirects: 0 });
    assert.notEqual(response.status(), 404, `${path} answers 404`);
    assert.ok(response.status() < 500, `${path} answers ${response.status()}`);
    if (!(response.headers()['content-type'] || '').includes('text/html')) continue;
    const html = await response.text();
    for (const match of html.matchAll(/<a href=['"]?([^'" >]+)[^>]*>Aide</g)) helpPages.add(new URL(match[1], base + path).pathname);
    for (const match of html.matchAll(/(?:href|src)=['"]?([^'" >]+)/g)) {
      const target = new URL(match[1].replaceAll('&amp;', '&'), base + path);
      if (target.origin !== new URL(base).origin || leaves.test(target.pathname + target.search)) continue;
      queue.push(target.pathname.slice(1) + target.search);
    }
  }
  assert.ok(helpPages.size >= 4, `help pages linked: ${[...helpPages]}`);
  for (const help of helpPages) assert.equal((await context.request.get(base + help.slice(1))).status(), 200, help);
  await page.goto(base + 'help/index.html');
  await snap(page, 'help-index');

  // The spent link no longer opens anything.
  const stranger = await (await browser.newContext()).newPage();
  const refused = await stranger.goto(link);
  assert.equal(refused.status(), 403);
  await snap(stranger, 'spent-link');

  assert.deepEqual(problems, [], 'no script errors on the pages');
  console.log(`desk browser test passed; screenshots in ${output}`);
} catch (error) {
  console.error(error);
  process.exitCode = 1;
} finally {
  await browser.close();
  await stopDeskService(home);
  rmSync(home, { recursive: true, force: true });
}
