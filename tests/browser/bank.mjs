// The bank pages in a real browser: a CSV statement uploaded over a slowed link (its progress
// shown), its columns chosen, the matches accepted, the new line posted against an account, and
// the account reconciled to a zero difference; then the report. A screenshot of each step goes to
// the output folder. Usage: node bank.mjs KONTAVO_BINARY OUTPUT_FOLDER
import { execFileSync } from 'node:child_process';
import { mkdtempSync, mkdirSync, rmSync, writeFileSync } from 'node:fs';
import { tmpdir } from 'node:os';
import { join } from 'node:path';
import assert from 'node:assert/strict';
import { startKontavoServer, stopKontavoServer, logOn, launchBrowser, screenshotTaker, openPage, press } from './serve.mjs';

const [kontavo, output] = process.argv.slice(2);
mkdirSync(output, { recursive: true });
const home = mkdtempSync(join(tmpdir(), 'kontavo-browser-bank-'));
const env = { ...process.env, KONTAVO_HOME: home, KONTAVO_COUNTRY: 'FR' };
const run = (args, input) => execFileSync(kontavo, args, { env, input, encoding: 'utf8' });

run(['init']);
run(['record', 'set', 'Misc', 'Company', 'Name=Atelier SARL']);
run(['account', 'defaults']);
const bank = run(['account', 'list']).split('\n').find((line) => line.includes('Compte-chèque')).split('\t')[0].trim();
const fees = run(['account', 'list']).split('\n').find((line) => line.includes('Frais bancaires') || line.includes('Frais financiers'))
  .split('\t')[0].trim();
run(['customer', 'add', 'C1', 'Name=Dupont SARL']);
run(['invoice', 'new', '--customer', 'C1', '--date', '2026-02-25', '--untaxed', '--line', '|x|1|1200|Aucun|']);
run(['payment', 'add', '--customer', 'C1', '--amount', '1200', '--date', '2026-03-02', '--apply', '1=1200',
     '--account', 'Compte-chèque']);
run(['user', 'add', 'admin@example.fr', '--name', 'Alice Admin', '--admin', '--password-stdin'], 'secret12\n');

// Headings no guess can read, a decimal comma; blank lines pad the file so that its upload
// lasts long enough over the slowed link to show its progress.
const statement = join(home, 'releve.csv');
writeFileSync(statement, 'Jour;Opération;Valeur\n03/03/2026;VIR SEPA DUPONT SARL FACT 1;1200,00\n'
  + '28/03/2026;FRAIS TENUE DE COMPTE;-17,14\n' + ' \n'.repeat(40000));

const { server, base } = await startKontavoServer(kontavo, env);

const browser = await launchBrowser();
const snap = screenshotTaker(output, 'bank-');

try {
  const { context, page, problems } = await openPage(browser);

  await logOn(page, base, 'admin@example.fr', 'secret12');

  // The upload over a slow link shows how much has arrived.
  await page.goto(base + `loadbankstatement?account=${bank}`);
  await snap(page, 'load');
  await page.setInputFiles('#statement', statement);
  const cdp = await context.newCDPSession(page);
  await cdp.send('Network.emulateNetworkConditions', { offline: false, latency: 0, downloadThroughput: -1, uploadThroughput: 15000 });
  await press(page, 'Importer');
  await page.waitForFunction(() => /Envoi du fichier : \d+ %/.test(document.getElementById('uploadStatus').textContent));
  await snap(page, 'upload-progress');
  await page.waitForURL(/matchCSV/, { timeout: 60000 });
  await cdp.send('Network.emulateNetworkConditions', { offline: false, latency: 0, downloadThroughput: -1, uploadThroughput: -1 });

  // The columns of this bank's layout, remembered for the account.
  await page.selectOption('[id="111"]', '1');
  await page.selectOption('[id="112"]', '2');
  await page.selectOption('[id="113"]', '3');
  await page.selectOption('[id="121"]', 'comma');
  await snap(page, 'matchcsv');
  await press(page, 'Importer');
  await page.waitForURL(/recon\?account=/);
  const lines = page.locator('#banklines');
  assert.match(await lines.innerText(), /VIR SEPA DUPONT SARL FACT 1\s+Trouvée REC10000/);
  assert.match(await lines.innerText(), /FRAIS TENUE DE COMPTE\s+Nouvelle/);
  await snap(page, 'recon-imported');

  await press(page, 'Accepter les correspondances');
  await page.waitForFunction(() => /Acceptée REC10000/.test(document.getElementById('banklines').innerText));
  await page.click('#banklines a:has-text("Saisir")');
  await page.waitForURL(/recordTxnFromBST/);
  await page.selectOption('[id="205"]', fees);
  await snap(page, 'post-line');
  await press(page, '  OK  ');
  await page.waitForURL(/recon\?account=/);
  assert.match(await page.locator('#banklines').innerText(), /FRAIS TENUE DE COMPTE\s+Saisie GJ10000/);

  // The statement's date and balance: the paired lines are ticked, the difference is zero.
  await page.fill('[id="201"]', '2026-03-31');
  await page.fill('[id="202"]', '1182,86');
  await press(page, 'Enregistrer');
  await page.waitForSelector('#difference');
  assert.match(await page.locator('#difference').innerText(), /Écart : \D*0[.,]00/);
  assert.equal(await page.locator('#reconitems input[type=checkbox]:checked').count(), 2);
  await snap(page, 'recon-zero');
  await press(page, 'Terminer le rapprochement');
  await page.waitForFunction(() => /Dernier rapprochement terminé : 2026-03-31/.test(document.body.innerText));
  await snap(page, 'recon-finished');

  await page.click('a:has-text("Rapport")');
  await page.waitForURL(/generatereconcilereport/);
  assert.match(await page.locator('table.report').innerText(), /Solde du relevé\s+\D*1\D?182[.,]86/);
  await snap(page, 'report');

  run(['check']);  // exit 1, which throws, when the books and their totals disagree
  assert.deepEqual(problems, [], 'no script errors on the pages');
  console.log(`bank browser test passed; screenshots in ${output}`);
} finally {
  await browser.close();
  await stopKontavoServer(server);
  rmSync(home, { recursive: true, force: true });
}
