// The settings, backup and restore pages and the CSV import page in a real browser (Debian's
// chromium, headless, driven by playwright-core) against the real kontavo binary: each settings
// page changes a value that the command line then reads back; the e-mail page sends its test
// message to the real aiosmtpd server on loopback; the web server page moves the server to
// another port; a backup is made, a record broken, the backup restored (progress seen) and the
// record read back whole; a folder that is no backup is refused with the data left as they were;
// customers come in from a CSV file after their preview. Screenshots go to the output folder.
// Usage: node settings.mjs KONTAVO_BINARY OUTPUT_FOLDER
import { execFileSync, spawn } from 'node:child_process';
import { mkdtempSync, mkdirSync, rmSync, readdirSync, writeFileSync } from 'node:fs';
import { tmpdir } from 'node:os';
import { join, dirname } from 'node:path';
import { fileURLToPath } from 'node:url';
import assert from 'node:assert/strict';
import { freeLoopbackPort, stopDeskService, launchBrowser, screenshotTaker, openPage, press } from './serve.mjs';

const [kontavo, output] = process.argv.slice(2);
mkdirSync(output, { recursive: true });
const home = mkdtempSync(join(tmpdir(), 'kontavo-settings-'));
const env = { ...process.env, KONTAVO_HOME: home, LANG: 'fr_FR.UTF-8', LC_ALL: '' };
delete env.DISPLAY;
delete env.WAYLAND_DISPLAY;
const run = (args, input) => execFileSync(kontavo, args, { env, input, encoding: 'utf8' });
const field = (list, key, name) => run(['record', 'get', list, key, name]).trim();

const port = await freeLoopbackPort();
run(['web', 'port', String(port)]);
run(['init', '--name', 'Atelier Dupont', '--country', 'FR']);
let base = `http://127.0.0.1:${port}/`;

// The real SMTP server of the mail tests; it prints its port first.
const smtpFolder = join(home, 'smtp');
mkdirSync(smtpFolder);
const here = dirname(fileURLToPath(import.meta.url));
const smtp = spawn('/usr/bin/python3', [join(here, '../llib/net/smtpserver.py'), '--outdir', smtpFolder], { stdio: ['ignore', 'pipe', 'inherit'] });
const smtpPort = await new Promise((resolve, reject) => {
  smtp.stdout.once('data', (data) => resolve(parseInt(String(data).replace('PORT ', ''), 10)));
  smtp.once('exit', () => reject(new Error('the SMTP server did not start')));
});


const browser = await launchBrowser();
const snap = screenshotTaker(output, '');

try {
  const link = run(['desk', '--no-open']).trim();
  const { page, problems } = await openPage(browser);
  page.on('dialog', (dialog) => dialog.accept());
  await page.goto(link);
  await page.waitForURL(base + 'main');
  const ok = async (route) => {
    await press(page, '  OK  ');
    await page.waitForURL(base + route);
  };
  const expectError = async (pattern) => {
    await page.waitForFunction(() => document.getElementById('errorTag') && !document.getElementsByName('submit')[0].disabled);
    assert.match(await page.locator('#errorTag').innerText(), pattern);
  };

  await page.click('div.navtabs a:has-text("Réglages")');
  await page.waitForURL(base + 'settingsmenu');
  await snap(page, 'settings-menu');

  // Company details.
  await page.click('a[href="settings"]');
  await page.fill('[id="108"]', '12345678');
  await press(page, '  OK  ');
  await expectError(/Le numéro SIREN doit compter 9 chiffres\./);
  await page.fill('[id="108"]', '123456789');
  await snap(page, 'settings-company');
  await ok('settingsmenu');
  assert.equal(field('Misc', 'Company', 'SIREN'), '123456789');

  // Regional settings: the symbol after the amount, a point as decimal symbol.
  await page.click('a[href="settingsregional"]');
  await page.fill('[id="103"]', ' ');
  await press(page, '  OK  ');
  await expectError(/Le symbole décimal doit être un seul caractère, autre qu'un chiffre ou une espace\./);
  await page.fill('[id="103"]', '.');
  await page.fill('[id="104"]', ',');
  await page.selectOption('[id="102"]', '1');
  await page.selectOption('[id="105"]', '2');
  await snap(page, 'settings-regional');
  await ok('settingsmenu');
  assert.equal(field('Misc', 'Options', 'DecimalSymbol'), '.');
  assert.equal(field('Misc', 'Options', 'ThousandsSymbol'), ',');
  assert.equal(field('Misc', 'Options', 'CurrencyOrder'), '1');
  assert.equal(field('Misc', 'Options', 'PrintedDateOrder'), '2');

  // Taxes: a rate that does not read, then the reduced rate renamed and a new tax added.
  await page.click('a[href="settingstax"]');
  const taxes = Number(run(['tax', 'show']).match(/^Taxes : (\d+)/)[1]);
  await page.fill(`[id="${1100 + 2}"]`, 'dix');
  await press(page, '  OK  ');
  await expectError(/Taux invalide pour la taxe 2 : « dix »/);
  await page.fill(`[id="${1100 + 2}"]`, '10');
  await page.fill(`[id="${1000 + 2}"]`, 'TVA intermédiaire');
  await page.fill(`[id="${1000 + taxes + 1}"]`, 'TVA spéciale');
  await page.fill(`[id="${1100 + taxes + 1}"]`, '8.5');
  await snap(page, 'settings-taxes');
  await ok('settingsmenu');
  const shown = run(['tax', 'show']);
  assert.match(shown, new RegExp(`^Taxes : ${taxes + 1}$`, 'm'));
  assert.match(shown, /^2\tTVA intermédiaire\t10/m);
  assert.match(shown, new RegExp(`^${taxes + 1}\\tTVA spéciale\\t8.5`, 'm'));

  // Document options: the quotes' terms and notes, line discounts for every document.
  await page.click('a[href="settingsdocuments"]');
  await page.click('a:has-text("Devis")');
  await page.waitForURL(base + 'settingsdocuments?kind=Quote');
  await page.fill('[id="103"]', '15');
  await page.fill('[id="104"]', 'Devis valable quinze jours.');
  // The template form the quotes print with: the default ones are offered from the start.
  await page.selectOption('[id="106"]', 'commande');
  await page.check('[id="201"]');
  await snap(page, 'settings-documents');
  await ok('settingsmenu');
  assert.equal(field('Misc', 'Quote', 'PaymentTermsDays'), '15');
  assert.equal(field('Misc', 'Quote', 'NotesText'), 'Devis valable quinze jours.');
  assert.equal(field('Misc', 'Quote', 'Form'), 'commande');
  assert.equal(field('Misc', 'Options', 'DontShowDiscountColumn'), '0');

  // Linked accounts: the deposit account becomes the cash box.
  await page.click('a[href="settingslinked"]');
  await page.fill('[id="101"]', '530000');
  await snap(page, 'settings-linked');
  await ok('settingsmenu');
  assert.match(run(['account', 'linked']), /^1\t[^\t]+\t530000\tCaisse$/m);

  // E-mail: stored, then the test message through the real server.
  await page.click('a[href="settingsmail"]');
  await page.fill('[id="101"]', `127.0.0.1:${smtpPort}`);
  await page.fill('[id="104"]', 'compta@atelier-dupont.fr');
  await page.uncheck('[id="106"]');
  await page.fill('[id="110"]', 'claire@atelier-dupont.fr');
  await press(page, "Envoyer un message d'essai");
  await page.waitForURL(/settingsmail\?sent=/);
  assert.match(await page.locator('#controltable').innerText(), /Le message d'essai a été envoyé à claire@atelier-dupont\.fr\./);
  await snap(page, 'settings-mail-sent');
  assert.match(run(['mail', 'config']), /^server=127\.0\.0\.1:\d+\nuser=\npassword=\nsender=compta@atelier-dupont\.fr$/m);
  assert.ok(readdirSync(smtpFolder).includes('msg-1.json'), 'the test message reached the server');

  // The closing date.
  await page.goto(base + 'settingsclosing');
  await page.check('[id="101"]');
  await page.fill('[id="102"]', '2025-12-31');
  await snap(page, 'settings-closing');
  await ok('settingsmenu');
  assert.equal(field('Misc', 'Company', 'CTDEnabled'), '1');
  assert.equal(field('Misc', 'Company', 'CTDDate'), '2025-12-31');

  // The web server moves to another port, and the browser with it.
  await page.click('a[href="settingsweb"]');
  await page.fill('[id="102"]', 'huit');
  await press(page, '  OK  ');
  await expectError(/Numéro de port non valide\./);
  const newPort = await freeLoopbackPort();
  await page.fill('[id="102"]', String(newPort));
  await snap(page, 'settings-web');
  await press(page, '  OK  ');
  base = `http://127.0.0.1:${newPort}/`;
  await page.waitForURL(base + 'settingsweb', { timeout: 30000 });
  assert.match(run(['web', 'status']), new RegExp(`^Port : ${newPort}$`, 'm'));

  // A backup, with its progress, into a folder of this computer.
  const backups = mkdtempSync(join(tmpdir(), 'kontavo-backups-'));
  await page.goto(base + 'backup');
  await page.fill('[id="101"]', backups);
  await press(page, 'Sauvegarder');
  await page.waitForFunction(() => document.getElementById('jobresult').textContent !== '');
  assert.match(await page.locator('#jobresult').innerText(), /^Sauvegarde terminée normalement : .*Kontavo-Sauvegarder-/);
  assert.equal(await page.locator('#jobbar').evaluate((bar) => bar.style.width), '100%');
  await snap(page, 'backup-done');
  const backup = join(backups, readdirSync(backups)[0]);

  // A record broken, then a folder that is no backup refused with the data left alone.
  run(['record', 'set', 'Misc', 'Company', 'Name=Nom cassé']);
  await page.fill('[id="102"]', home);
  await press(page, 'Restaurer');
  await expectError(/Échec de la restauration\. Souhaitez-vous choisir un autre dossier \?/);
  await snap(page, 'restore-refused');
  assert.equal(field('Misc', 'Company', 'Name'), 'Nom cassé');

  // The restore: its progress polled, other pages refused while it runs, the record back.
  await page.fill('[id="102"]', backup);
  await press(page, 'Restaurer');
  await page.waitForSelector('#jobpanel', { state: 'visible' });
  // The panel still shows the backup's outcome until the restore's job replaces it.
  await page.waitForFunction(() => /restaur/.test(document.getElementById('jobresult').textContent), null, { timeout: 60000 });
  assert.equal(await page.locator('#jobresult').innerText(), 'Les données ont été restaurées avec succès.');
  assert.equal(await page.locator('#errorTag').count(), 0, 'the refusal is gone once the restore is under way');
  await snap(page, 'restore-done');
  assert.equal(field('Misc', 'Company', 'Name'), 'Atelier Dupont');
  assert.equal(field('Misc', 'Company', 'SIREN'), '123456789');

  // Customers from a CSV file: upload, the columns, the preview with a refused row, the import.
  const csv = join(home, 'clients.csv');
  writeFileSync(csv, 'Code;Raison sociale;Courriel;Remarque\nC1;Boulangerie Roux;roux@example.fr;x\n;Sans code;;y\nC2;Café du Port;port@example.fr;z\n');
  await page.goto(base + 'customerlist');
  await page.click('a:has-text("Importer un fichier CSV")');
  await page.setInputFiles('#csvfile', csv);
  await press(page, 'Envoyer');
  await page.waitForURL(/importcsv\?file=[0-9a-f]{32}&kind=customers/);
  const preview = await page.locator('#controltable').innerText();
  assert.match(preview, /4 lignes lues|3 lignes lues/);
  assert.match(preview, /2 à créer/);
  assert.match(preview, /Ligne #0003/);
  await page.selectOption('[id="1004"]', '-');
  await press(page, "Actualiser l'aperçu");
  await page.waitForURL(/1004=-/);
  await snap(page, 'import-preview');
  await press(page, 'Importer');
  await page.waitForSelector('text=Importation terminée');
  await snap(page, 'import-done');
  const customers = run(['customer', 'list']);
  assert.match(customers, /C1\tBoulangerie Roux/);
  assert.match(customers, /C2\tCafé du Port/);

  assert.deepEqual(problems, [], 'no script errors on the pages');
  console.log(`settings browser test passed; screenshots in ${output}`);
} catch (error) {
  console.error(error);
  for (const context of browser.contexts()) for (const page of context.pages()) await snap(page, 'failure');
  process.exitCode = 1;
} finally {
  await browser.close();
  await stopDeskService(home);
  smtp.kill();
  rmSync(home, { recursive: true, force: true });
}
