// The sales side in a real browser: Debian's chromium, headless, driven by playwright-core,
// against a real `kontavo serve` in a fresh French business. A screenshot of each screen goes to
// the output folder. Usage: node sales.mjs KONTAVO_BINARY OUTPUT_FOLDER
import { execFileSync } from 'node:child_process';
import { mkdtempSync, mkdirSync, rmSync } from 'node:fs';
import { tmpdir } from 'node:os';
import { join } from 'node:path';
import assert from 'node:assert/strict';
import { startKontavoServer, stopKontavoServer, launchBrowser, screenshotTaker, openPage, press } from './serve.mjs';

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
const browser = await launchBrowser();
const snap = screenshotTaker(output, '');

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
  const { page, problems } = await openPage(browser);
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
  await press(page, 'Afficher');
  await page.waitForURL(/invoicelist\?prd=py/);
  assert.match(await page.locator('#listblock').innerText(), /1 document\(s\)/);
  await snap(page, 'invoicelist-last-year');

  // ---- A name an older program stored in Latin-1 shows as it was meant -------------------------
  execFileSync('sh', ['-c', '"$0" customer add LAT "Name=$(printf \'Soci\\351t\\351 G\\351n\\351rale\')"', kontavo],
               { env });
  await page.goto(base + 'customerlist');
  assert.match(await page.locator('table.hltbl').innerText(), /Société Générale/);
  await snap(page, 'customerlist-latin1');
  await page.goto(base + 'customerdelete?id=LAT');  // the later steps count the customers

  // ---- A customer, a quote of three lines, its order, its invoice, a payment --------------------
  await page.goto(base + 'customerlist');
  await page.click('a:has-text("Nouveau client")');
  await page.fill('[id="101"]', 'DUP');
  await page.fill('[id="102"]', 'Dupont SA');
  await page.fill('[id="103"]', '3 place du Marché, Lyon');
  await snap(page, 'customerprop');
  await press(page, '  OK  ');
  await page.waitForURL(base + 'customerlist');
  assert.match(await page.locator('table.hltbl').innerText(), /Dupont SA/);

  // The quote: an item (its description and price come from the server), a free line and the
  // document's discount.
  await page.goto(base + 'quoteprop');
  await page.selectOption('[id="101"]', 'DUP');
  await page.fill('[id="10000"]', 'PAIN');
  await page.press('[id="10000"]', 'Tab');
  await page.waitForFunction(() => document.getElementById('10003').value === '2,50');
  assert.equal(await page.locator('[id="10001"]').inputValue(), 'Pain de campagne');
  await page.fill('[id="10002"]', '4');
  await page.click('input[value="Ajouter une ligne"]');
  await page.fill('[id="10011"]', 'Livraison en tournée');
  await page.fill('[id="10013"]', '15,00');
  await page.fill('[id="9001"]', '10');
  await page.fill('[id="9002"]', 'Remise fidélité');
  // Leaving the page and coming back: what was typed is still there.
  await page.waitForTimeout(1200);
  await page.goto(base + 'customerlist');
  await page.goto(base + 'quoteprop');
  assert.match(await page.content(), /Les valeurs saisies et non enregistrées ont été reprises\./);
  assert.equal(await page.locator('[id="10013"]').inputValue(), '15,00');
  assert.equal(await page.locator('[id="9002"]').inputValue(), 'Remise fidélité');
  await page.waitForFunction(() => /Total/.test(document.getElementById('fktotals').innerText));
  await snap(page, 'quoteprop-draft-restored');
  await press(page, 'Enregistrer');
  await page.waitForURL(base + 'quotelist');
  const quote = json(['quote', 'show', '1']);
  assert.equal(quote.lines.length, 3, 'item, free line and discount line');
  const total = quote.total;
  await snap(page, 'quotelist');

  // Quote to order, order to invoice.
  await page.click('a[href="quoteco?id=1"]');
  await page.waitForURL(base + 'orderprop?id=1');
  await snap(page, 'orderprop');
  await page.goto(base + 'orderlist');
  await page.click('a[href="orderci?id=1"]');
  await page.waitForURL(/invoiceprop\?id=\d+$/);
  const invoiceKey = new URL(page.url()).searchParams.get('id');
  assert.equal(invoiceKey, '2', 'the invoice after last year\'s');
  const invoice = json(['invoice', 'show', invoiceKey]);
  assert.equal(invoice.total, total);
  assert.equal(invoice.fields.QuoteNumber, '1');
  assert.equal(invoice.fields.OrderNumber, '1');
  await snap(page, 'invoiceprop');

  // A payment of 20,00 from the invoice's page; the rest stays due.
  await page.click('a:has-text("Enregistrer un paiement")');
  await page.waitForURL(base + 'invoicepay?id=' + invoiceKey);
  assert.equal(await page.locator('[id="103"]').inputValue(), (total / 100).toFixed(2).replace('.', ','));
  await page.fill('[id="103"]', '20,00');
  await snap(page, 'invoicepay');
  await press(page, 'Enregistrer');
  await page.waitForURL(base + 'invoiceprop?id=' + invoiceKey);
  const rest = total - 2000;
  assert.match(await page.locator('.documentlinks').innerText(), new RegExp('Reste dû : ' + (rest / 100).toFixed(2).replace('.', ',')));
  await page.goto(base + 'paymentlist');
  assert.match(await page.locator('#listblock').innerText(), /1 paiement\(s\), reçu 20,00/);
  await snap(page, 'paymentlist');
  // The aging report shows the rest, and the customer's balance is it.
  const aging = json(['report', 'aging', '--format', 'json']);
  const dupont = aging.rows.find((row) => /DUP|Dupont/.test(row.label));
  assert.ok(dupont, 'Dupont in the aging report');
  assert.equal(dupont.values[0], rest);
  await page.goto(base + 'customerlist');
  assert.match(await page.locator('table.hltbl').innerText(), new RegExp((rest / 100).toFixed(2).replace('.', ',')));
  await snap(page, 'customerlist-rest-due');

  // ---- An "Afficheur" sees and changes nothing -----------------------------------------------
  const { context: viewerContext, page: viewer } = await openPage(browser, { viewport: { width: 390, height: 844 } },
                                                                  problems);  // a phone
  await logon(viewer, 'victor@example.fr', 'victor12');
  await viewer.goto(base + 'invoicelist');
  assert.equal(await viewer.locator('a:has-text("Supprimer")').count(), 0);
  assert.equal(await viewer.locator('a:has-text("Nouvelle facture")').count(), 0);
  // Nothing is wider than the phone: the header's links wrap, wide lists scroll inside the page.
  const widths = await viewer.evaluate(() => ({ page: document.documentElement.scrollWidth,
                                               header: document.querySelector('table.headertable').scrollWidth,
                                               screen: window.innerWidth }));
  assert.ok(widths.page <= widths.screen && widths.header <= widths.screen, JSON.stringify(widths));
  await snap(viewer, 'viewer-invoicelist-phone');
  await viewer.goto(base + 'invoiceprop?id=' + invoiceKey);
  assert.match(await viewer.content(), /Votre compte permet seulement de consulter les données\./);
  const alerted = new Promise((resolve) => viewer.once('dialog', (dialog) => { resolve(dialog.message()); dialog.dismiss(); }));
  await press(viewer, 'Enregistrer');
  assert.equal(await alerted, 'Votre compte permet seulement de consulter les données.');
  await snap(viewer, 'viewer-invoiceprop-refused');
  const refused = await viewer.request.post(base + 'paymentprop', {
    form: { id: '', 101: 'DUP', 102: isoDate(today), 103: '5', rbg3: '301', submit: 'Enregistrer' } });
  assert.match(await refused.text(), /seulement de consulter/);
  const deleted = await viewer.request.get(base + 'invoicedelete?id=1', { maxRedirects: 0 });
  assert.match(deleted.headers().location, /msg=Votre%20compte/);
  await viewerContext.close();

  // ---- The books afterwards --------------------------------------------------------------------
  assert.equal(json(['payment', 'list']).length, 1);
  execFileSync(kontavo, ['check'], { env });  // throws on a difference
  const references = new Set(run(['ledger']).split('\n').filter(Boolean).map((line) => line.split('\t')[1]));
  assert.deepEqual([...references].sort(), ['REC10000', 'SLS10000', 'SLS10001'],
                   'the old invoice, the new invoice and the payment, nothing else');

  assert.deepEqual(problems, [], 'no script errors on the pages');
  console.log(`browser test passed; screenshots in ${output}`);
} finally {
  await browser.close();
  await stopKontavoServer(server);
  rmSync(home, { recursive: true, force: true });
}
