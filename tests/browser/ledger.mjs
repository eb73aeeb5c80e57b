// The ledger pages in a real browser: a new account added to the chart, a journal entry refused
// with each of its messages in turn (the old date asked as a question over the page and declined)
// then recorded, a cheque written and voided; then the books are checked and the ledger holds
// exactly the expected transactions. A screenshot of each step goes to the output folder.
// Usage: node ledger.mjs KONTAVO_BINARY OUTPUT_FOLDER
import { execFileSync } from 'node:child_process';
import { mkdtempSync, mkdirSync, rmSync } from 'node:fs';
import { tmpdir } from 'node:os';
import { join } from 'node:path';
import assert from 'node:assert/strict';
import { startKontavoServer, stopKontavoServer, logOn, launchBrowser, screenshotTaker, openPage, press } from './serve.mjs';

const [kontavo, output] = process.argv.slice(2);
mkdirSync(output, { recursive: true });
const home = mkdtempSync(join(tmpdir(), 'kontavo-browser-ledger-'));
const env = { ...process.env, KONTAVO_HOME: home, KONTAVO_COUNTRY: 'FR' };
const run = (args, input) => execFileSync(kontavo, args, { env, input, encoding: 'utf8' });

run(['init']);
run(['record', 'set', 'Misc', 'Company', 'Name=Atelier SARL']);
run(['account', 'defaults']);  // amounts written "1,234.56" in this business
run(['user', 'add', 'admin@example.fr', '--name', 'Alice Admin', '--admin', '--password-stdin'], 'secret12\n');
const day = (offset) => new Date(Date.now() + offset * 86400000).toISOString().slice(0, 10);
const today = day(0);

const { server, base } = await startKontavoServer(kontavo, env);
const browser = await launchBrowser();
const snap = screenshotTaker(output, 'ledger-');
const refusal = async (page, text) => {
  try {
    await page.waitForFunction((expected) => {
      const row = document.getElementById('errorTag');
      return row && row.textContent.includes(expected);
    }, text, { timeout: 10000 });
  } catch (error) {
    await snap(page, 'refusal-missing');
    const shown = await page.evaluate(() => (document.getElementById('errorTag') || {}).textContent || '(rien)');
    throw new Error(`expected the refusal "${text}", the page shows: ${shown}`);
  }
};

try {
  const { page, problems } = await openPage(browser);

  await logOn(page, base, 'admin@example.fr', 'secret12');

  // A new expense account; its number first refused as too short.
  await page.goto(base + 'acclist');
  await page.click('#newaccount');
  await page.waitForURL(/newacc/);
  await page.fill('[id="101"]', 'Frais de réception');
  await page.check('[id="205"]');
  await page.selectOption('[id="107"]', "Charges d'exploitation");
  await page.fill('[id="102"]', '644');
  await press(page, '  OK  ');
  await refusal(page, 'doit contenir 4 chiffres exactement');
  await snap(page, 'account-refused');
  await page.fill('[id="102"]', '6440');
  await press(page, '  OK  ');
  await page.waitForURL(/acclist/);
  assert.match(await page.locator('table.hltbl').innerText(), /6440\s+Frais de réception\s+Dépenses\s+Débit/);
  await snap(page, 'account-added');

  // The journal entry, refused with each message in turn.
  await page.goto(base + 'journalentry');
  const line = async (index, account, debit, credit) => {
    const id = 1000 + index * 10;
    await page.selectOption(`[id="${id}"]`, account);
    await page.fill(`[id="${id + 1}"]`, debit);
    await page.fill(`[id="${id + 2}"]`, credit);
  };
  await line(0, '6440', '120.00', '');
  await line(1, '1110', '', '100.00');
  await page.fill('[id="101"]', day(-400));
  await page.fill('[id="103"]', '');
  await press(page, 'Enregistrer');
  await refusal(page, "Vous ne pouvez enregistrer qu'une transaction équilibrée.");
  assert.equal(await page.inputValue('[id="105"]'), '20.00');
  await snap(page, 'entry-unbalanced');

  await page.fill('[id="1012"]', '120.00');
  await press(page, 'Enregistrer');
  await page.waitForSelector('#questionbox');
  assert.match(await page.locator('#questionbox').innerText(), /qui date de plus d'un an/);
  await snap(page, 'entry-old-date-question');
  await page.click('#questioncancel');
  await page.waitForSelector('#questionbox', { state: 'detached' });

  await page.fill('[id="101"]', today);
  await press(page, 'Enregistrer');
  await refusal(page, 'Vous devez entrer un numéro de référence de transaction.');
  await page.fill('[id="103"]', 'GJ[auto]');
  await press(page, 'Enregistrer');
  await refusal(page, 'Veuillez entrer une description de transaction.');
  await snap(page, 'entry-no-description');
  await page.fill('[id="104"]', 'Repas client');
  await line(0, '', '', '');
  await line(1, '', '', '');
  await press(page, 'Enregistrer');
  await refusal(page, "Aucun compte n'a été imputé.");
  await line(0, '6440', '120.00', '');
  await line(1, '1110', '', '120.00');
  await press(page, 'Enregistrer');
  await page.waitForURL(/journalentry\?saved=GJ10000/);
  assert.match(await page.content(), /La transaction a été enregistrée\./);
  await snap(page, 'entry-saved');

  // A cheque written from the bank account, then voided.
  await page.goto(base + 'cashtxn');
  await page.selectOption('[id="101"]', '1110');
  await page.fill('[id="103"]', '80.00');
  await page.fill('[id="104"]', 'Traiteur Martin');
  await page.selectOption('[id="1000"]', '6440');
  await page.fill('[id="1001"]', '80.00');
  await snap(page, 'cheque-form');
  await press(page, 'Enregistrer');
  await page.waitForURL(/checklist/);
  assert.match(await page.locator('table.hltbl').innerText(), /Traiteur Martin\s+\D*80[,.]00\D*\s+Émis/);
  await snap(page, 'cheque-written');
  // Printed with its stub, the amount in words, read back with poppler.
  const [cheque] = await Promise.all([page.waitForEvent('download'), page.click('table.hltbl a:has-text("Imprimer")')]);
  assert.equal(cheque.suggestedFilename(), 'Chèque-1.pdf');
  await cheque.saveAs(join(output, 'cheque.pdf'));
  assert.match(execFileSync('pdftotext', ['-layout', join(output, 'cheque.pdf'), '-'], { encoding: 'utf8' }),
               /Talon du chèque n° 1[\s\S]*quatre-vingts euros[\s\S]*Traiteur Martin/);
  await page.click('table.hltbl a:has-text("Annuler")');
  await page.waitForURL(/checkvoid/);
  await press(page, 'Annuler le chèque');
  await page.waitForURL(/checklist/);
  assert.match(await page.locator('table.hltbl').innerText(), new RegExp(`Annulé le ${today}`));
  await snap(page, 'cheque-voided');

  await page.goto(base + 'viewjournal');
  assert.match(await page.locator('#jvcount').innerText(), /6 lignes/);
  await snap(page, 'journal');

  run(['check']);  // exit 1, which throws, when the books and their totals disagree
  const ledger = run(['ledger']).trim().split('\n').map((row) => row.split('\t').slice(1, 6).join(' '));
  assert.deepEqual(ledger.sort(), [
    'GJ10000 General 1110 Repas client -120.00',
    'GJ10000 General 6440 Repas client 120.00',
    'PMT10000 Paiements 1110 Chèque n° 1; Traiteur Martin -80.00',
    'PMT10000 Paiements 6440 Chèque n° 1; Traiteur Martin 80.00',
    'PMT10000V Paiements 1110 Annulation du chèque n° 1 80.00',
    'PMT10000V Paiements 6440 Annulation du chèque n° 1 -80.00',
  ]);
  assert.deepEqual(problems, [], 'no script errors on the pages');
  console.log(`ledger browser test passed; screenshots in ${output}`);
} finally {
  await browser.close();
  await stopKontavoServer(server);
  rmSync(home, { recursive: true, force: true });
}
