// Kontavo web access in a real browser: Debian's chromium, headless, driven by playwright-core,
// against a real `kontavo serve` in a fresh application folder. A screenshot of each page goes
// to the output folder. Usage: node webaccess.mjs KONTAVO_BINARY OUTPUT_FOLDER
import { execFileSync } from 'node:child_process';
import { copyFileSync, mkdtempSync, mkdirSync, readFileSync, rmSync } from 'node:fs';
import { tmpdir } from 'node:os';
import { join } from 'node:path';
import assert from 'node:assert/strict';
import { startKontavoServer, stopKontavoServer, launchBrowser, screenshotTaker, openPage, press } from './serve.mjs';

const [kontavo, output] = process.argv.slice(2);
mkdirSync(output, { recursive: true });
const home = mkdtempSync(join(tmpdir(), 'kontavo-browser-'));
const env = { ...process.env, KONTAVO_HOME: home };
const run = (args, input) => execFileSync(kontavo, args, { env, input, encoding: 'utf8' });

run(['record', 'set', 'Misc', 'Company', 'Name=Principale SARL']);
mkdirSync(join(home, 'Shared', 'MultiBus', '1'), { recursive: true });
run(['--business', '1', 'record', 'set', 'Misc', 'Company', 'Name=Autre SA']);
// An item with a stock under its reorder level (an opening quantity) in the second business.
run(['--business', '1', 'item', 'add', 'W', '--description', 'Widget', '--price', '10', '--reorder-level', '5',
  '--reorder-qty', '20']);
run(['--business', '1', 'record', 'set', 'Items', 'W', 'Quantity=3']);
// The second business keeps French books: a SIREN and last year's rent, for its FEC.
const lastYear = new Date().getFullYear() - 1;
run(['--business', '1', 'record', 'set', 'Misc', 'Company', 'SIREN=732829320']);
run(['--business', '1', 'account', 'defaults']);
run(['--business', '1', '--yes', 'journal', 'add', '--date', `${lastYear}-06-01`, '--ref', 'GJ1', '--desc', 'Loyer',
     'dr:6410:100', 'cr:1110:100']);
run(['user', 'add', 'admin@example.fr', '--name', 'Alice Admin', '--admin', '--password-stdin'], 'secret12\n');

const { server, base } = await startKontavoServer(kontavo, env);

const browser = await launchBrowser();
const snap = screenshotTaker(output, '');
const errorText = (page) => page.locator('#errorTag').innerText();

async function logon(page, email, password, { remember = false, enter = false } = {}) {
  await page.goto(base + 'logon');
  await page.fill('[id="101"]', email);
  await page.fill('[id="102"]', password);
  if (remember) await page.check('[id="103"]');
  if (enter) await page.press('[id="102"]', 'Enter');
  else await page.click('input[name=submit]');
}

try {
  const { context, page, problems } = await openPage(browser, { viewport: { width: 1280, height: 800 } });

  // Without a session every page leads to the logon page.
  await page.goto(base);
  assert.equal(new URL(page.url()).pathname, '/logon');
  assert.equal(await page.title(), 'Kontavo - Connexion');
  await snap(page, 'logon');

  await logon(page, 'admin@example.fr', 'wrongpass');
  await page.waitForSelector('#errorTag');
  assert.match(await errorText(page), /Échec de la connexion\. Veuillez vérifier que le mot de passe est correct\./);
  await snap(page, 'logon-wrong-password');

  // Enter in the password field counts as the default button; the remember box makes the cookie last.
  await logon(page, 'Admin@Example.fr', 'secret12', { remember: true, enter: true });
  await page.waitForURL(base + 'chooseprofile');
  const cookie = (await context.cookies()).find((c) => c.name === 'kontavo_sess');
  assert.ok(cookie && /^l[a-z]{8}\d+$/.test(cookie.value), 'long-lived session cookie');
  assert.ok(cookie.expires > Date.now() / 1000 + 365 * 86400, 'cookie kept for years');
  // Out of reach of the pages' scripts, and never sent with a request another site starts.
  assert.equal(cookie.httpOnly, true, 'HttpOnly session cookie');
  assert.equal(cookie.sameSite, 'Strict', 'SameSite=Strict session cookie');
  assert.ok(!(await page.evaluate(() => document.cookie)).includes('kontavo_sess'), 'script cannot read the session');
  await snap(page, 'chooseprofile');

  await page.getByLabel('Autre SA').check();
  await press(page, '  OK  ');
  await page.waitForURL(base + 'main');
  assert.match(await page.locator('h1.companyname').innerText(), /Autre SA/);
  assert.match(await page.locator('td.headeruser').innerText(), /Connecté sous Alice Admin/);
  await snap(page, 'main');

  // The tab bar leads to the items; a new item is refused, then recorded.
  await page.click('div.navtabs a:has-text("Articles")');
  await page.waitForURL(base + 'itemlist');
  assert.equal(await page.locator('a.navtabcurrent').innerText(), 'Articles');
  await page.click('text=Ajouter un nouvel article');
  await page.waitForURL(/itemprop/);
  await page.fill('[id="101"]', 'PAIN');
  await page.fill('[id="102"]', 'Pain de campagne');
  await page.fill('[id="103"]', 'deux euros');
  await press(page, '  OK  ');
  await page.waitForSelector('#errorTag');
  assert.match(await errorText(page), /Montant invalide : deux euros\./);
  await snap(page, 'itemprop-error');
  await page.fill('[id="103"]', '2.50');
  await press(page, '  OK  ');
  await page.waitForURL(base + 'itemlist');
  assert.match(await page.locator('table.hltbl tbody').innerText(), /PAIN\s+Pain de campagne/);
  await snap(page, 'itemlist');

  // The list shows the stock, marked when under the reorder level; the stock page lists the movements.
  assert.match(await page.locator('table.hltbl tbody').innerText(), /W\s+Widget\s+Produit stocké[^\n]*\s3 !/);
  await page.click('a[href="itemstock?id=W"]');
  await page.waitForURL(/itemstock/);
  assert.match(await page.locator('h2').innerText(), /W Widget/);
  assert.match(await page.locator('table.hltbl tbody').innerText(), /Stock initial\s+3/);
  await snap(page, 'itemstock');
  // The kind of an item is checked as the command line checks it, and stored as its word.
  await page.goto(base + 'itemprop?id=PAIN&onok=itemlist&oncancel=itemlist');
  await page.fill('[id="105"]', 'gadget');
  await press(page, '  OK  ');
  await page.waitForSelector('#errorTag');
  assert.match(await errorText(page), /Type d'article invalide : gadget/);
  await page.fill('[id="105"]', 'Service');
  await page.fill('[id="106"]', '1.20');
  await press(page, '  OK  ');
  await page.waitForURL(base + 'itemlist');
  assert.match(await page.locator('table.hltbl tbody').innerText(), /PAIN\s+Pain de campagne\s+Service/);
  assert.equal(run(['--business', '1', 'record', 'get', 'Items', 'PAIN', 'Kind']), 'service\n');

  // Sales persons with their commission rate, and customer groups with their price level.
  await page.click('div.navtabs a:has-text("Vendeurs")');
  await page.waitForURL(base + 'salespersonlist');
  await page.click('text=Ajouter un vendeur');
  await page.waitForURL(/salespersonprop/);
  await page.fill('[id="101"]', 'ANNE');
  await page.fill('[id="102"]', 'Anne Martin');
  await page.fill('[id="103"]', 'anne@exemple.fr');
  await page.fill('[id="104"]', '150');
  await press(page, '  OK  ');
  await page.waitForSelector('#errorTag');
  assert.match(await errorText(page), /Le taux CommissionRate doit être entre 0 et 100 : 150\./);
  await snap(page, 'salespersonprop-error');
  await page.fill('[id="104"]', '5,5');
  await press(page, '  OK  ');
  await page.waitForURL(base + 'salespersonlist');
  assert.match(await page.locator('table.hltbl tbody').innerText(), /ANNE\s+Anne Martin\s+anne@exemple\.fr\s+5\.5/);
  await snap(page, 'salespersonlist');
  await page.click('div.navtabs a:has-text("Groupes")');
  await page.waitForURL(base + 'grouplist');
  await page.click('text=Ajouter un groupe de clients');
  await page.waitForURL(/groupprop/);
  await page.fill('[id="101"]', 'PRO');
  await page.fill('[id="102"]', 'Professionnels');
  await page.fill('[id="103"]', '10');
  await press(page, '  OK  ');
  await page.waitForURL(base + 'grouplist');
  assert.match(await page.locator('table.hltbl tbody').innerText(), /PRO\s+Professionnels\s+10/);
  await snap(page, 'grouplist');
  // The administrator downloads last year's FEC from its tab; the file passes our checker.
  await page.click('div.navtabs a:has-text("FEC")');
  await page.waitForURL(base + 'fecexport');
  await snap(page, 'fecexport');
  const [download] = await Promise.all([page.waitForEvent('download'),
    press(page, 'Télécharger le FEC')]);
  const fecName = `732829320FEC${lastYear}1231.txt`;
  assert.equal(download.suggestedFilename(), fecName);
  const fecPath = join(home, fecName);
  copyFileSync(await download.path(), fecPath);
  const fec = readFileSync(fecPath, 'latin1');
  assert.match(fec, /^JournalCode\|JournalLib\|EcritureNum\|/);
  assert.match(fec, /\nOD\|Opérations diverses\|1\|\d{8}\|6410\|Loyer\|/);
  assert.match(run(['export', 'fec', '--check', fecPath]), /Fichier conforme : 2 lignes, 1 écritures\./);
  // Without a SIREN the page says why.
  await page.goto(base + 'chooseprofile');
  await page.getByLabel('Principale SARL').check();
  await press(page, '  OK  ');
  await page.waitForURL(base + 'main');
  await page.goto(base + 'fecexport');
  await press(page, 'Télécharger le FEC');
  await page.waitForSelector('#errorTag');
  assert.match(await errorText(page), /Le numéro SIREN de l'entreprise \(9 chiffres\) est nécessaire/);
  await snap(page, 'fecexport-no-siren');

  // A new user through "userprop", with each refusal of its checks.
  await page.goto(base + 'userlist');
  await page.click('text=Ajouter un nouvel utilisateur');
  await page.waitForURL(/userprop/);
  await snap(page, 'userprop');
  const ok = () => press(page, '  OK  ');
  const expectError = async (pattern) => {
    await page.waitForFunction(() => document.getElementById('errorTag') && !document.getElementsByName('submit')[0].disabled);
    assert.match(await errorText(page), pattern);
  };
  await ok();
  await expectError(/Veuillez entrer un nom pour l'utilisateur\./);
  await page.fill('[id="102"]', 'Bob Martin');
  await page.fill('[id="101"]', 'bob');
  await ok();
  await expectError(/Adresse de courriel non valide\.\s*Veuillez entrer une adresse de courriel valide pour créer un nouveau compte\./);
  await page.fill('[id="101"]', 'ADMIN@example.fr');
  await ok();
  await expectError(/Cette adresse de courriel est utilisée actuellement par un autre compte\./);
  await page.fill('[id="101"]', 'bob@example.fr');
  await page.fill('[id="103"]', 'abc');
  await page.fill('[id="104"]', 'abc');
  await ok();
  await expectError(/Il doit contenir au moins 6 caractères\./);
  await page.fill('[id="103"]', 'bobsecret');
  await page.fill('[id="104"]', 'bobsecreT');
  await ok();
  await expectError(/Les mots de passe doivent correspondre\./);
  await snap(page, 'userprop-error');
  // "Administrateur" ticks and locks every business box.
  await page.getByLabel('Administrateur').check();
  assert.ok(await page.locator('[id="1000"]').isDisabled());
  assert.ok(await page.locator('[id="1001"]').isChecked());
  await page.getByLabel('Utilisateur', { exact: true }).check();
  assert.ok(await page.locator('[id="1000"]').isEnabled());
  await page.locator('[id="1001"]').uncheck();
  await page.locator('[id="1000"]').check();
  await page.fill('[id="104"]', 'bobsecret');
  await ok();
  await page.waitForURL(base + 'userlist');
  await snap(page, 'userlist');

  // Sorting the list by clicking its header, in the browser.
  const firstAddress = () => page.locator('table.hltbl tbody tr:first-child td:first-child').innerText();
  assert.equal(await firstAddress(), 'admin@example.fr');
  await page.click('table.hltbl th:first-child');
  assert.equal(await firstAddress(), 'bob@example.fr');
  await page.click('table.hltbl th:first-child');
  assert.equal(await firstAddress(), 'admin@example.fr');
  await snap(page, 'userlist-sorted');

  // Changing the password.
  await page.goto(base + 'changepassword');
  await page.fill('[id="101"]', 'not-it');
  await page.fill('[id="102"]', 'newsecret');
  await page.fill('[id="103"]', 'newsecret');
  await ok();
  await expectError(/Mot de passe non valide\. Veuillez réessayer\./);
  await page.fill('[id="101"]', 'secret12');
  await ok();
  await page.waitForURL(base + 'changepasswordchanged');
  assert.match(await page.content(), /Your password has been changed\./);
  await snap(page, 'changepasswordchanged');

  // Log-off, then the expired-session page.
  await page.goto(base + 'logoff');
  await snap(page, 'logoff');
  await page.goto(base + 'main');
  assert.equal(new URL(page.url()).pathname, '/logon');
  await page.goto(base + 'logoff');
  assert.match(await page.content(), /Votre session a expiré\./);
  await snap(page, 'session-expired');

  // Lock-out: the seventh attempt within 20 minutes fails even with the right password.
  const other = await browser.newContext({ viewport: { width: 390, height: 844 }, isMobile: true });
  const phone = await other.newPage();
  for (let i = 0; i < 6; i++) {
    await logon(phone, 'bob@example.fr', 'wrong' + i);
    await phone.waitForSelector('#errorTag');
  }
  await logon(phone, 'bob@example.fr', 'bobsecret');
  await phone.waitForFunction(() => !document.getElementsByName('submit')[0].disabled);
  assert.equal(new URL(phone.url()).pathname, '/logon');
  assert.match(await errorText(phone), /Échec de la connexion/);
  await snap(phone, 'locked-out-phone');

  // The user can open its one business only; the chooser offers nothing else.
  const third = await browser.newContext();
  const bobPage = await third.newPage();
  execFileSync(kontavo, ['record', 'set', 'WebAccounts', 'bob@example.fr', 'LogonFailures=0', 'LogonFailTime=0'], { env });
  await logon(bobPage, 'bob@example.fr', 'bobsecret');
  await bobPage.waitForURL(base + 'chooseprofile');
  assert.equal(await bobPage.locator('input[type=radio]').count(), 1);
  await snap(bobPage, 'chooseprofile-user');
  // The FEC is for administrators only.
  await bobPage.goto(base + 'fecdownload?year=' + lastYear);
  assert.match(await bobPage.content(), /réservé aux administrateurs/);
  await snap(bobPage, 'fecexport-user');

  assert.deepEqual(problems, [], 'no script errors on the pages');
  console.log(`browser test passed; screenshots in ${output}`);
} finally {
  await browser.close();
  await stopKontavoServer(server);
  rmSync(home, { recursive: true, force: true });
}
