// The purchase side in a real browser: Debian's chromium, headless, driven by playwright-core,
// against a real `kontavo serve` in a fresh French business: a supplier entered in its dialog, a
// purchase order turned into a bill when the goods arrive, a partial payment of the bill, the
// supplier's balance and what is owed by due date, a cheque settling the rest of the bill then
// voided; then `kontavo check` is clean and the ledger holds exactly the transactions expected. A screenshot of each screen goes to the output
// folder. Usage: node purchases.mjs KONTAVO_BINARY OUTPUT_FOLDER
import { execFileSync } from 'node:child_process';
import { mkdtempSync, mkdirSync, rmSync } from 'node:fs';
import { tmpdir } from 'node:os';
import { join } from 'node:path';
import assert from 'node:assert/strict';
import { startKontavoServer, stopKontavoServer, launchBrowser, screenshotTaker, openPage, press } from './serve.mjs';

const [kontavo, output] = process.argv.slice(2);
mkdirSync(output, { recursive: true });
const home = mkdtempSync(join(tmpdir(), 'kontavo-purchases-'));
const env = { ...process.env, KONTAVO_HOME: home, LC_ALL: 'fr_FR.UTF-8', KONTAVO_COUNTRY: 'FR' };
const run = (args, input) => execFileSync(kontavo, args, { env, input, encoding: 'utf8' });

const pad = (n) => String(n).padStart(2, '0');
const today = new Date();
const isoDate = (d) => `${d.getFullYear()}-${pad(d.getMonth() + 1)}-${pad(d.getDate())}`;
const inDays = (days) => isoDate(new Date(today.getFullYear(), today.getMonth(), today.getDate() + days));

run(['init', '--name', 'Papeterie Lenoir SARL']);
run(['user', 'add', 'colette@example.fr', '--name', 'Colette', '--user', '--profile', 'Papeterie Lenoir SARL',
     '--password-stdin'], 'colette12\n');
run(['item', 'add', 'PAP', '--description', 'Ramette de papier', '--price', '6']);

const { server, base } = await startKontavoServer(kontavo, env);
const browser = await launchBrowser();
const snap = screenshotTaker(output, '');

try {
  const { page, problems } = await openPage(browser);
  await page.goto(base + 'logon');
  await page.fill('[id="101"]', 'colette@example.fr');
  await page.fill('[id="102"]', 'colette12');
  await page.click('input[name=submit]');
  await page.waitForURL(/\/(main|chooseprofile)$/);

  // ---- A supplier, entered in its dialog; a bad SIREN is refused at its control first --------
  await page.goto(base + 'supplierlist');
  await page.click('a:has-text("Nouveau fournisseur")');
  await page.waitForURL(/supplierprop/);
  await page.fill('[id="101"]', 'DUP');
  await page.fill('[id="102"]', 'Dupont Fournitures SA');
  await page.fill('[id="104"]', 'M. Dupont');
  await page.fill('[id="107"]', '12345');
  await press(page, '  OK  ');
  await page.locator('#errorTag').waitFor();
  assert.match(await page.locator('#errorTag').innerText(), /Numéro SIREN invalide/);
  await snap(page, 'supplierprop-refused');
  await page.fill('[id="107"]', '552 100 554');
  await page.fill('[id="109"]', '607000');
  await page.fill('[id="110"]', '30');
  await press(page, '  OK  ');
  await page.waitForURL((url) => url.pathname === '/supplierlist');
  assert.match(await page.locator('body').innerText(), /Dupont Fournitures SA/);
  await snap(page, 'supplierlist');

  // ---- A purchase order of 10 reams at 3,00; it becomes a bill when the goods arrive --------
  run(['porder', 'new', '--customer', 'DUP', '--line', 'PAP|Ramette de papier|10|3|TVA 20 %|']);
  await page.goto(base + 'porderlist');
  assert.match(await page.locator('#listblock').innerText(), /DUP/);
  await snap(page, 'porderlist');
  await page.click('a:has-text("Facturer")');
  await page.waitForURL(/billprop\?id=PRC10000/);
  assert.equal(await page.locator('[id="101"]').inputValue(), 'DUP');
  assert.equal(await page.locator('[id="20000"]').inputValue(), '607000');
  assert.equal(await page.locator('[id="20001"]').inputValue(), 'PAP');
  await snap(page, 'billprop-from-order');
  // The supplier's own number typed in, and saved again.
  await page.fill('[id="104"]', 'F-2026-118');
  await press(page, 'Enregistrer');
  await page.waitForURL((url) => url.pathname === '/billlist');
  const bills = await page.locator('#listblock').innerText();
  assert.match(bills, /PRC10000/);
  assert.match(bills, /F-2026-118/);
  assert.match(bills, /36,00\s€/);
  await snap(page, 'billlist');
  assert.match(run(['item', 'stock', 'PAP']), /Quantité\t10\n/);

  // ---- A partial payment of 10,00 on the bill -----------------------------------------------
  await page.goto(base + 'billpaymentlist');
  await page.click('a:has-text("Nouveau règlement fournisseur")');
  await page.waitForURL(/billpaymentprop/);
  await page.selectOption('[id="101"]', 'DUP');
  await page.waitForURL(/billpaymentprop\?id=&supplier=DUP/);
  await page.locator('#supinfo b').first().waitFor();
  assert.match(await page.locator('#supinfo').innerText(), /Solde dû : 36,00\s€/);
  await page.fill('[id="103"]', '10,00');
  await page.selectOption('[id="105"]', 'Virement');
  await page.fill('[id="30000"]', '10,00');
  await snap(page, 'billpaymentprop');
  await press(page, 'Enregistrer');
  await page.waitForURL((url) => url.pathname === '/billpaymentlist');
  assert.match(await page.locator('#listblock').innerText(), /10,00\s€/);
  await snap(page, 'billpaymentlist');

  // ---- The supplier's balance and what is owed by due date -----------------------------------
  await page.goto(base + 'supplierinfo?id=DUP');
  const info = await page.locator('body').innerText();
  assert.match(info, /Solde dû : 26,00\s€/);
  assert.match(info, /PRC10000/);
  await snap(page, 'supplierinfo');
  assert.equal(await (await page.request.get(base + 'getSupplierBalance?id=DUP')).text(), '26,00 €');
  await page.goto(base + 'accpayable');
  const payable = await page.locator('body').innerText();
  assert.match(payable, new RegExp(inDays(30)));
  assert.match(payable, /DUP[\s\S]*26,00\s€/);
  await snap(page, 'accpayable');

  // ---- A cheque settling the rest of the bill, then voided -----------------------------------
  await page.goto(base + 'cashtxn');
  await page.fill('[id="103"]', '26,00');
  await page.selectOption('[id="107"]', 'DUP');
  await page.locator('#billstopay').waitFor();
  // Shown again for the supplier: the amount stays, the payee is the supplier's name.
  assert.equal(await page.locator('[id="103"]').inputValue(), '26,00');
  assert.equal(await page.locator('[id="104"]').inputValue(), 'Dupont Fournitures SA');
  assert.match(await page.locator('#billstopay').innerText(), /PRC10000[\s\S]*36,00\s€[\s\S]*26,00\s€/);
  await page.fill('[id="30000"]', '27,00');
  await press(page, 'Enregistrer');
  await page.locator('#errorTag').waitFor();
  assert.match(await page.locator('#errorTag').innerText(), /ce qu'elle doit encore \(26,00\s€\)/);
  await page.fill('[id="30000"]', '26,00');
  await snap(page, 'cheque-to-supplier');
  await press(page, 'Enregistrer');
  await page.waitForURL(/checklist/);
  assert.match(await page.locator('table.hltbl').innerText(), /Dupont Fournitures SA\s+26,00\s€\s+Règlement fournisseur/);
  await page.goto(base + 'supplierinfo?id=DUP');
  assert.match(await page.locator('body').innerText(), /Solde dû : 0,00\s€/);
  await page.goto(base + 'checklist');
  await page.click('table.hltbl a:has-text("Annuler")');
  await page.waitForURL(/checkvoid/);
  await press(page, 'Annuler le chèque');
  await page.waitForURL(/checklist/);
  assert.match(await page.locator('table.hltbl').innerText(), /Annulé le/);
  await snap(page, 'cheque-voided');
  await page.goto(base + 'supplierinfo?id=DUP');
  assert.match(await page.locator('body').innerText(), /Solde dû : 26,00\s€/);
  await page.goto(base + 'billpaymentlist');
  assert.match(await page.locator('#listblock').innerText(), /Chèque annulé le/);
  await snap(page, 'billpaymentlist-voided');

  assert.deepEqual(problems, [], 'no script errors on the pages');
} finally {
  await browser.close();
  await stopKontavoServer(server);
}

// ---- The books after the flow: clean, and exactly the bill, the payment, the cheque and its void ----
try {
  run(['check']);
  const lines = run(['ledger']).trim().split('\n').map((line) => line.split('\t'));
  const summary = lines.map(([, reference, type, account, , amount]) => `${reference} ${type} ${account} ${amount}`);
  assert.deepEqual(summary, [
    'PRC10000 Achats 401000 -36.00', 'PRC10000 Achats 607000 30.00', 'PRC10000 Achats 445660 6.00',
    'PMT10000 Paiements 401000 10.00', 'PMT10000 Paiements 512000 -10.00',
    'PMT10001 Paiements 401000 26.00', 'PMT10001 Paiements 512000 -26.00',
    'PMT10001V Paiements 401000 -26.00', 'PMT10001V Paiements 512000 26.00',
  ]);
  assert.equal(run(['record', 'get', 'Suppliers', 'DUP', 'Balance']), '2600\n');
  assert.equal(run(['record', 'get', 'Bills', 'PRC10000', 'AmountPaid']), '1000\n');
  assert.equal(run(['record', 'get', 'BillPayments', '2', 'Void']), '1\n');
  console.log(`browser test passed; screenshots in ${output}`);
} finally {
  rmSync(home, { recursive: true, force: true });
}
