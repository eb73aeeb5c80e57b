// The report pages an administrator uses, in a real browser: a consolidated profit and loss over
// two businesses with their factors and its PDF download, then the UK VAT return against the HMRC
// stand-in (tests/invoice/shared/hmrcserver.py): settings, authorization with the pasted code,
// obligations, a return prefilled from the sales and edited, its submission and its viewing; and
// the CA3 figures a French business's VAT return page shows. A screenshot of each step goes to the
// output folder.
// Usage: node reportsadmin.mjs KONTAVO_BINARY OUTPUT_FOLDER
import { execFileSync, spawn } from 'node:child_process';
import { mkdtempSync, mkdirSync, readFileSync, rmSync } from 'node:fs';
import { tmpdir } from 'node:os';
import { dirname, join } from 'node:path';
import { fileURLToPath } from 'node:url';
import assert from 'node:assert/strict';
import { startKontavoServer, stopKontavoServer, logOn, launchBrowser, screenshotTaker, openPage, press } from './serve.mjs';

const [kontavo, output] = process.argv.slice(2);
mkdirSync(output, { recursive: true });
const home = mkdtempSync(join(tmpdir(), 'kontavo-browser-reportsadmin-'));
const env = { ...process.env, KONTAVO_HOME: home };
const run = (args, input) => execFileSync(kontavo, ['--yes', ...args], { env, input, encoding: 'utf8' });

// The HMRC stand-in over HTTPS with a certificate made on the spot, trusted through `vat config`.
function startHmrc() {
  const cert = join(home, 'hmrc-cert.pem'), key = join(home, 'hmrc-key.pem');
  execFileSync('openssl', ['req', '-x509', '-newkey', 'rsa:2048', '-nodes', '-keyout', key, '-out', cert, '-days', '1',
    '-subj', '/CN=127.0.0.1', '-addext', 'subjectAltName=IP:127.0.0.1'], { stdio: 'ignore' });
  const script = join(dirname(fileURLToPath(import.meta.url)), '..', 'invoice', 'shared', 'hmrcserver.py');
  const hmrc = spawn('/usr/bin/python3', [script, '--cert', cert, '--key', key, '--outdir', home],
    { stdio: ['ignore', 'pipe', 'inherit'] });
  return new Promise((resolve, reject) => {
    let seen = '';
    hmrc.stdout.on('data', (chunk) => {
      seen += chunk;
      const port = /PORT (\d+)/.exec(seen);
      if (port) resolve({ hmrc, cert, base: `https://127.0.0.1:${port[1]}` });
    });
    hmrc.on('exit', () => reject(new Error('HMRC stand-in ended: ' + seen)));
  });
}

const year = new Date().getFullYear();
const last = year - 1;
run(['record', 'set', 'Misc', 'Company', 'Name=Atelier Ltd']);
run(['record', 'set', 'Misc', 'Options', 'CountryCode=GB']);
run(['account', 'defaults']);
run(['customer', 'add', 'C1', 'Name=Smith']);
run(['invoice', 'new', '--customer', 'C1', '--date', `${last}-03-10`, '--untaxed', '--line', '|Consulting|1|1500|Aucun|']);
run(['business', 'add', '--name', 'Filiale SAS', '--country', 'FR']);
run(['--business', '1', 'customer', 'add', 'C9', 'Name=Client']);
run(['--business', '1', 'invoice', 'new', '--customer', 'C9', '--date', `${last}-06-01`, '--untaxed', '--line', '|Conseil|1|1000|Aucun|']);
// A French sale of today, for the CA3 figures (outside last year's consolidated statement).
const today = new Date();
const thisMonth = `${today.getFullYear()}-${String(today.getMonth() + 1).padStart(2, '0')}`;
run(['--business', '1', 'invoice', 'new', '--customer', 'C9', '--line', '|Pose|1|1000|TVA 20 %|']);
run(['business', 'use', '0']);
run(['tax', 'set', '--count', '1', '--name', '1=VAT', '--rate', '1=20', '--default', '1']);
run(['user', 'add', 'alice@example.co.uk', '--name', 'Alice Admin', '--admin', '--password-stdin'], 'alicesecret\n');
const { hmrc, cert, base: hmrcBase } = await startHmrc();
run(['vat', 'config', '--ca-file', cert]);

const { server, base } = await startKontavoServer(kontavo, env);
const browser = await launchBrowser();
const snap = screenshotTaker(output, 'reportsadmin-');

try {
  const { page, problems } = await openPage(browser, { acceptDownloads: true });
  await logOn(page, base, 'alice@example.co.uk', 'alicesecret');

  // A consolidated profit and loss: the subsidiary counted for half, last fiscal year by name.
  await page.goto(base + 'reports');
  await page.click('a[href="consolreport"]');
  await page.waitForURL(/consolreport/);
  await page.selectOption('[id="201"]', 'pl');
  assert.equal(await page.isChecked('[id="300"]'), true, 'the open business is ticked');
  assert.equal(await page.isDisabled('[id="401"]'), true, 'a factor waits for its business');
  await page.check('[id="301"]');
  await page.fill('[id="401"]', '0,5');
  await snap(page, 'consolidation-choice');
  await press(page, 'Continuer');
  await page.waitForURL(/reportperiod\?report=pl&cons=/);
  await page.selectOption('[id="201"]', 'pfy');
  await page.waitForFunction((y) => document.getElementById('202').value === `${y}-01-01`, last);
  await press(page, 'Afficher le rapport');
  await page.waitForURL(/generateconsreport\?report=pl/);
  assert.match(await page.locator('#consolidated').innerText(), /Atelier Ltd × 1\s+Filiale SAS × 0.5/);
  assert.match(await page.locator('table.report').innerText(), /Bénéfice net\s+\D*2\D?000[.,]00/);  // 1,500 + 1,000 / 2
  await snap(page, 'consolidated-pl');

  // Its PDF, beside its CSV: the PDF of `kontavo report pl --format pdf`.
  const [download] = await Promise.all([page.waitForEvent('download'), page.click('a:has-text("Télécharger en PDF")')]);
  assert.match(download.suggestedFilename(), /^Rapport-pl-\d{4}-12-31\.pdf$/);
  const pdfPath = join(output, 'reportsadmin-consolidated-pl.pdf');
  await download.saveAs(pdfPath);
  assert.equal(readFileSync(pdfPath).subarray(0, 5).toString(), '%PDF-');
  assert.equal(await page.locator('a:has-text("Télécharger en CSV")').count(), 1);

  // The VAT return of a British business: first its settings.
  await page.goto(base + 'reports');
  await page.click('a[href="vatreturn"]');
  await page.waitForURL(/vatreturn$/);
  assert.match(await page.locator('body').innerText(), /Please enter your VAT registration number in Options to proceed\./);
  await snap(page, 'vat-unset');
  await page.click('a:has-text("Modifier les paramètres")');
  await page.fill('#vrn', '123456789');
  await page.fill('#api', hmrcBase);
  await page.click('input[value="Enregistrer"]');
  await page.waitForSelector('#vatalert');
  assert.match(await page.locator('#vatalert').innerText(), /Paramètres enregistrés\./);

  // The authorization: HMRC's page opens from the link; its code is pasted back.
  await page.goto(base + 'vatauth');
  assert.ok((await page.getAttribute('#authorizelink', 'href')).startsWith(hmrcBase + '/oauth/authorize?response_type=code&'));
  await page.fill('#code', 'Success code=browser/1');
  await snap(page, 'vat-authorization');
  await page.click('input[value="Valider le code"]');
  await page.waitForSelector('#vatalert');
  assert.match(await page.locator('#vatalert').innerText(), /L'accès à HMRC est autorisé\./);

  // Sales recorded since, then the obligations.
  run(['invoice', 'new', '--customer', 'C1', '--date', '2000-05-01', '--line', '|Work|1|150.75|VAT|']);
  await page.goto(base + 'vatreturn');
  await page.click('input[value="Obtenir les obligations"]');
  await page.waitForSelector('table#obligations');
  assert.match(await page.locator('#vatalert').innerText(), /3 obligations reçues de HMRC\./);
  await snap(page, 'vat-obligations');

  // The return of an open period, prefilled; box 4 typed, box 5 follows; declared and sent.
  await page.click('a[href="vatsubmit?period=00A2"]');
  await page.waitForURL(/vatsubmit/);
  assert.equal(await page.inputValue('#box1'), '30.15');
  assert.equal(await page.inputValue('#box6'), '150');
  await page.fill('#box4', '10.15');
  assert.equal(await page.inputValue('#box5'), '20.00');
  await page.fill('#box7', '50');
  await page.click('input[value="Envoyer la déclaration à HMRC"]');
  await page.waitForSelector('#vatalert');
  assert.match(await page.locator('#vatalert').innerText(), /Cochez la déclaration/);
  assert.equal(await page.inputValue('#box4'), '10.15', 'the typed boxes stay');
  await page.check('#declare');
  await snap(page, 'vat-return-filled');
  await page.click('input[value="Envoyer la déclaration à HMRC"]');
  await page.waitForSelector('#receipt');
  assert.match(await page.locator('#vatalert').innerText(), /Successful Submission\s+VAT Returns has been submitted successfully/);
  assert.match(await page.locator('#receipt').innerText(), /formBundleNumber\s+123456789012/);
  await snap(page, 'vat-submitted');

  // Viewing it, once HMRC lists the period as fulfilled.
  await page.goto(base + 'vatreturn');
  await page.click('input[value="Obtenir les obligations"]');
  await page.waitForSelector('table#obligations');
  await page.click('a[href="vatview?period=00A2"]');
  await page.waitForSelector('table.report');
  assert.match(await page.locator('table.report').innerText(), /Box 5 Net VAT due\s+\D*20[.,]00/);
  await snap(page, 'vat-view');

  // The French business: the same page gives the CA3 figures of a month, then of a quarter.
  await page.goto(base + 'chooseprofile');
  await page.check('[id="302"]');
  await press(page, '  OK  ');
  await page.waitForURL(base + 'main');
  await page.goto(base + 'vatreturn');
  await page.selectOption('#period', `m${thisMonth}`);
  await page.click('input[value="Afficher"]');
  await page.waitForURL(/vatreturn\?period=m/);
  assert.match(await page.locator('#vatnet').innerText(), /TVA nette due \(ligne 28\) : \D*200[.,]00/);
  assert.match(await page.locator('table.report').innerText(), /08 TVA 20 %\s+\D*1\D?000[.,]00\s+\D*200[.,]00/);
  await snap(page, 'ca3-month');
  await page.selectOption('#period', `q${today.getFullYear()}-${Math.floor(today.getMonth() / 3) + 1}`);
  await page.click('input[value="Afficher"]');
  await page.waitForURL(/vatreturn\?period=q/);
  assert.match(await page.locator('#vatnet').innerText(), /200[.,]00/);
  assert.ok(await page.locator('a:has-text("Télécharger en PDF")').getAttribute('href'));
  await snap(page, 'ca3-quarter');

  assert.deepEqual(problems, [], 'no script errors on the pages');
  console.log(`reportsadmin browser test passed; screenshots in ${output}`);
} finally {
  await browser.close();
  hmrc.kill('SIGTERM');
  await stopKontavoServer(server);
  rmSync(home, { recursive: true, force: true });
}
