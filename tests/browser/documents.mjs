// What goes out of a sales document, in a real browser against a real `kontavo serve`: the
// printable view and its PDF (downloaded, read back with poppler), the receipt and the shipping
// label, the document's history and the print log, the e-mail dialog sending through the real
// aiosmtpd server on loopback (a refused recipient shown with the server's answer), and the
// e-mail of a list's selection through the background sender, whose outcome the list then shows.
// Usage: node documents.mjs KONTAVO_BINARY OUTPUT_FOLDER
import { execFileSync, spawn } from 'node:child_process';
import { mkdtempSync, mkdirSync, readdirSync, readFileSync, rmSync } from 'node:fs';
import { tmpdir } from 'node:os';
import { dirname, join } from 'node:path';
import { fileURLToPath } from 'node:url';
import assert from 'node:assert/strict';
import { logOn, startKontavoServer, stopKontavoServer, launchBrowser, screenshotTaker, openPage, press } from './serve.mjs';

const [kontavo, output] = process.argv.slice(2);
mkdirSync(output, { recursive: true });
const home = mkdtempSync(join(tmpdir(), 'kontavo-documents-'));
const env = { ...process.env, KONTAVO_HOME: home, LC_ALL: 'fr_FR.UTF-8', KONTAVO_COUNTRY: 'FR' };
const run = (args, input) => execFileSync(kontavo, args, { env, input, encoding: 'utf8' });
const pdfText = (path) => execFileSync('pdftotext', ['-layout', path, '-'], { encoding: 'utf8' });

const smtpFolder = join(home, 'smtp');
mkdirSync(smtpFolder);
const here = dirname(fileURLToPath(import.meta.url));
const smtp = spawn('/usr/bin/python3', [join(here, '../llib/net/smtpserver.py'), '--outdir', smtpFolder,
                                        '--refuse-rcpt', 'refus@example.fr'], { stdio: ['ignore', 'pipe', 'inherit'] });
const smtpPort = await new Promise((resolve, reject) => {
  smtp.stdout.once('data', (data) => resolve(parseInt(String(data).replace('PORT ', ''), 10)));
  smtp.once('exit', () => reject(new Error('the SMTP server did not start')));
});

run(['init', '--name', 'Atelier Dupuis', '--country', 'FR', '--siren', '123456789', '--legal-form', 'SARL']);
run(['tax', 'set', '--name', '1=TVA', '--rate', '1=20']);
run(['customer', 'add', 'C1', 'Name=Boulangerie Martin', 'Email=client@example.fr', 'Address=3 place Bellecour\n69002 Lyon']);
run(['customer', 'add', 'C2', 'Name=Café Refus', 'Email=refus@example.fr']);
run(['invoice', 'new', '--number', 'F1', '--customer', 'C1', '--line', 'PAIN|Pain de campagne|10|2.50|TVA|']);
run(['invoice', 'new', '--number', 'F2', '--customer', 'C2', '--line', 'CAFE|Café en grains|2|12|TVA|']);
run(['payment', 'add', '--customer', 'C1', '--amount', '30', '--apply', 'F1=30']);
run(['mail', 'config', '--server', `127.0.0.1:${smtpPort}`, '--sender', 'compta@dupuis.fr']);
run(['user', 'add', 'colette@example.fr', '--name', 'Colette', '--user', '--profile', 'Atelier Dupuis', '--password-stdin'], 'colette12\n');

const { server, base } = await startKontavoServer(kontavo, env);
const browser = await launchBrowser();
const snap = screenshotTaker(output, '');
const errorText = (page) => page.locator('#errorTag').innerText();

// Saves what a click downloads and returns its text as poppler reads it.
async function downloadedText(page, selector, name) {
  const [download] = await Promise.all([page.waitForEvent('download'), page.click(selector)]);
  assert.equal(download.suggestedFilename(), name);
  const path = join(output, name);
  await download.saveAs(path);
  return pdfText(path);
}

try {
  const { page, problems } = await openPage(browser, { acceptDownloads: true });
  await logOn(page, base, 'colette@example.fr', 'colette12');

  // ---- The printable view and the PDFs ------------------------------------------------------
  await page.goto(base + 'invoiceprop?id=F1');
  await page.click('#outputlinks a:has-text("Aperçu et impression")');
  await page.waitForURL(/invoiceprintview\?kind=invoice&id=F1/);
  assert.equal(await page.locator('#printtitle').innerText(), 'Facture N° F1');
  assert.equal(await page.locator('#printparty').innerText(), 'Boulangerie Martin');
  assert.equal(await page.locator('#printtotal').innerText(), '30,00 €');
  await snap(page, 'print-view');
  const invoice = await downloadedText(page, '#pdflink', 'Facture-F1.pdf');
  for (const part of ['FACTURE', 'N° F1', 'Boulangerie Martin', 'Pain de campagne', '30,00 €', 'SIREN 123456789'])
    assert.ok(invoice.includes(part), `${part} in\n${invoice}`);

  await page.click('a:has-text("Étiquette d\'expédition")');
  await page.waitForURL(/shiplabelinstructions/);
  await snap(page, 'shipping-label-instructions');
  const label = await downloadedText(page, '#labellink', 'Etiquette-F1.pdf');
  assert.match(label, /Destinataire[\s\S]*Boulangerie Martin/);

  // The receipt is printed from the payment's page.
  await page.goto(base + 'paymentprop?id=1');
  const [receipt] = await Promise.all([page.waitForEvent('download'), page.click('a:has-text("Reçu (PDF)")')]);
  await receipt.saveAs(join(output, 'receipt.pdf'));
  assert.match(pdfText(join(output, 'receipt.pdf')), /REÇU[\s\S]*Montant reçu : 30,00 €/);

  // ---- E-mail from the document's page --------------------------------------------------------
  await page.goto(base + 'invoicelog?kind=invoice&id=F1');
  await page.click('#emaillink');
  await page.waitForURL(/recordemailinfo/);
  assert.equal(await page.inputValue('[id="101"]'), 'client@example.fr');
  assert.match(await page.inputValue('[id="102"]'), /Facture F1/);
  await snap(page, 'email-dialog');
  await press(page, 'Envoyer');
  await page.waitForURL(/invoicelog\?kind=invoice&id=F1/);
  assert.equal(await page.locator('#emailstate').innerText(), 'Envoyé');
  assert.match(await page.locator('#pagemessage').innerText(), /Facture F1 envoyé par courriel\./);
  const history = await page.locator('#history').innerText();
  for (const action of ['Imprimé', 'Envoyé par courriel']) assert.ok(history.includes(action), history);
  assert.match(history, /Colette/);
  await snap(page, 'document-history');
  const sent = readdirSync(smtpFolder).filter((name) => name.endsWith('.eml'));
  assert.equal(sent.length, 1);
  assert.match(readFileSync(join(smtpFolder, sent[0]), 'latin1'), /filename="?Facture-F1\.pdf/);

  // A recipient the server refuses: the dialog stays, with the server's answer.
  await page.goto(base + 'recordemailinfo?kind=invoice&id=F2');
  await press(page, 'Envoyer');
  await page.waitForFunction(() => document.getElementById('errorTag') && !document.getElementsByName('submit')[0].disabled);
  assert.match(await errorText(page), /Le courriel n'est pas parti : .*550/);
  await snap(page, 'email-refused');

  // ---- E-mail of a list's selection, through the background sender ----------------------------
  await page.goto(base + 'invoicelist');
  await page.check('input[name="sel_F1"]');
  await page.check('input[name="sel_F2"]');
  await page.click('#emailselected');
  await page.waitForURL(/invoicelist\?msg=/);
  assert.match(await page.locator('p.errormessage').innerText(), /2 document\(s\) en cours d'envoi par courriel\./);
  // The list shows each document's state as the sender's attempts end.
  const stateOf = (key) => page.locator(`input[name="sel_${key}"] + .emailstate`).innerText();
  for (let tries = 0; tries < 50 && !((await stateOf('F1')) === 'envoyé' && (await stateOf('F2')) === 'échec'); ++tries) {
    await new Promise((resolve) => setTimeout(resolve, 200));
    await page.reload();
  }
  assert.equal(await stateOf('F1'), 'envoyé');
  assert.equal(await stateOf('F2'), 'échec');
  assert.match(await page.locator('input[name="sel_F2"] + .emailstate').getAttribute('title'), /550/);
  await snap(page, 'list-email-states');
  assert.equal(readdirSync(smtpFolder).filter((name) => name.endsWith('.eml')).length, 2);

  await page.click('a:has-text("Journal des impressions et des envois")');
  await page.waitForURL(/invoiceprintlog/);
  const log = await page.locator('#printlog').innerText();
  for (const part of ['Invoices/F1', 'Imprimé', 'Envoyé par courriel', 'Échec de l\'envoi', 'Colette'])
    assert.ok(log.includes(part), `${part} in\n${log}`);
  await snap(page, 'print-log');
  assert.deepEqual(problems, []);
} finally {
  await browser.close();
  await stopKontavoServer(server);
  smtp.kill();
  rmSync(home, { recursive: true, force: true });
}
