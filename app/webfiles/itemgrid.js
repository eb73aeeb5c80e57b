// Kontavo web access: the item-line grid of the sales documents' dialogs. The amount of each
// line is worked out as the user types (quantity, 1 when empty, times the unit price, less the
// line discount); choosing an item code fills in the item's description and price when they are
// empty (asked of the server, which knows the customer's price); "Ajouter une ligne" adds an empty row numbered after the others; the cross empties a row
// (an empty row is not saved). The document's totals (element "fktotals") are asked of the server
// a moment after each change, so that they round exactly as the saved document will. What is
// typed also goes to the session (element "fkdraft" names the route that keeps it) a moment
// after each change and when the page is left, so that coming back to the dialog shows it again.

function FKGrid() { return document.getElementById('itemgrid'); }

function FKNumber(text) {
  var value = parseFloat(String(text).replace(/\s/g, '').replace(',', '.'));
  return isNaN(value) ? 0 : value;
}

// The controls of a row by their column (data-col).
function FKCells(row) {
  var cells = {};
  var controls = row.querySelectorAll('[data-col], select');
  for (var i = 0; i < controls.length; i++) {
    var column = controls[i].tagName === 'SELECT' ? '4' : controls[i].getAttribute('data-col');
    cells[column] = controls[i];
  }
  return cells;
}

function FKUpdateRow(row) {
  var grid = FKGrid();
  var cells = FKCells(row);
  var amount = row.querySelector('td.fkamount');
  if (!grid || !amount || !cells['0']) return;
  if (cells['0'].value === '' && cells['1'].value === '' && cells['3'].value === '') {
    amount.textContent = '';
    return;
  }
  var quantity = cells['2'].value.trim() === '' ? 1 : FKNumber(cells['2'].value);
  var discount = cells['5'] ? FKNumber(cells['5'].value) : 0;
  var value = quantity * FKNumber(cells['3'].value) * (1 - discount / 100);
  amount.textContent = value.toFixed(parseInt(grid.getAttribute('data-digits'), 10) || 0);
}

// An item chosen on a row: the server fills its description and price where they are empty, at
// the price of the document's customer (element 101).
function FKItemChosen(row) {
  var cells = FKCells(row);
  var grid = FKGrid();
  var first = parseInt(grid.getAttribute('data-first'), 10);
  var stride = parseInt(grid.getAttribute('data-stride'), 10);
  var line = Math.floor((parseInt(cells['0'].id, 10) - first) / stride);
  var customer = document.getElementById('101');
  if (cells['0'].value !== '')
    SimpleAjaxCall('cbitemselchange', 'code=' + encodeURIComponent(cells['0'].value) + '&line=' + line +
                   '&customer=' + encodeURIComponent(customer ? customer.value : ''), HandleAjaxJSReturn,
                   function() {}, function() {}, 20000);
  FKUpdateRow(row);
}

// The answer of "cbitemselchange" for row line.
function FKItemFill(line, description, price) {
  var grid = FKGrid();
  if (!grid) return;
  var first = parseInt(grid.getAttribute('data-first'), 10);
  var stride = parseInt(grid.getAttribute('data-stride'), 10);
  var descriptionCell = document.getElementById(String(first + line * stride + 1));
  var priceCell = document.getElementById(String(first + line * stride + 3));
  if (!descriptionCell || !priceCell) return;
  if (descriptionCell.value === '') descriptionCell.value = description;
  if (priceCell.value === '') priceCell.value = price;
  var row = descriptionCell;
  while (row && row.tagName !== 'TR') row = row.parentNode;
  if (row) FKUpdateRow(row);
  FKDraftChanged();
  FKRefreshTotals();
}

function FKAddLine() {
  var grid = FKGrid();
  var count = document.getElementById('fklines');
  var rows = grid.querySelectorAll('tbody tr.fkline');
  if (!grid || !count || rows.length === 0) return;
  var line = parseInt(count.value, 10);
  var first = parseInt(grid.getAttribute('data-first'), 10);
  var stride = parseInt(grid.getAttribute('data-stride'), 10);
  var row = rows[rows.length - 1].cloneNode(true);
  var cells = FKCells(row);
  for (var column in cells) {
    var id = String(first + line * stride + parseInt(column, 10));
    cells[column].id = id;
    cells[column].name = id;
    if (cells[column].tagName === 'SELECT') cells[column].selectedIndex = 0;
    else cells[column].value = '';
  }
  row.querySelector('td.fkamount').textContent = '';
  grid.querySelector('tbody').appendChild(row);
  count.value = String(line + 1);
  cells['0'].focus();
}

function FKClearLine(link) {
  var row = link.parentNode.parentNode;
  var cells = FKCells(row);
  for (var column in cells) {
    if (cells[column].tagName === 'SELECT') cells[column].selectedIndex = 0;
    else cells[column].value = '';
  }
  FKUpdateRow(row);
  FKRefreshTotals();
  return false;
}

var fkTotalsTimer = null;

function FKRefreshTotals() {
  var totals = document.getElementById('fktotals');
  if (!totals || typeof SimpleAjaxCall !== 'function') return;
  if (fkTotalsTimer) clearTimeout(fkTotalsTimer);
  fkTotalsTimer = setTimeout(function() {
    SimpleAjaxCall(totals.getAttribute('data-route'),
                   GetParams('dialogform') + 'isComAJAX=1&MainControlId=' + totals.getAttribute('data-control'),
                   HandleAjaxJSReturn, function() {}, function() {}, 20000);
  }, 300);
}

var fkDraftTimer = null;
var fkDraftDirty = false;    // typed since the session last got the values
var fkSubmitting = false;    // a button was pressed: its answer decides, no draft is kept

function FKSaveDraft(leaving) {
  var draft = document.getElementById('fkdraft');
  if (fkDraftTimer) clearTimeout(fkDraftTimer);
  fkDraftTimer = null;
  if (!draft || !fkDraftDirty || fkSubmitting) return;
  fkDraftDirty = false;
  var route = draft.getAttribute('data-route');
  var params = GetParams('dialogform');
  if (leaving && navigator.sendBeacon)
    navigator.sendBeacon(route, new Blob([params], {type: 'application/x-www-form-urlencoded'}));
  else
    SimpleAjaxCall(route, params, function() {}, function() {}, function() {}, 20000);
}

function FKDraftChanged() {
  fkDraftDirty = true;
  fkSubmitting = false;
  if (fkDraftTimer) clearTimeout(fkDraftTimer);
  fkDraftTimer = setTimeout(function() { FKSaveDraft(false); }, 800);
}

(function() {
  var form = document.getElementById('dialogform');
  if (form) {
    form.addEventListener('input', FKRefreshTotals, false);
    form.addEventListener('change', FKRefreshTotals, false);
    if (document.getElementById('fkdraft')) {
      form.addEventListener('input', FKDraftChanged, false);
      form.addEventListener('change', FKDraftChanged, false);
      form.addEventListener('submit', function() {
        fkSubmitting = true;
        if (fkDraftTimer) clearTimeout(fkDraftTimer);
      }, false);
      window.addEventListener('pagehide', function() { FKSaveDraft(true); }, false);
    }
  }
  var grid = FKGrid();
  if (!grid) return;
  function rowOf(element) {
    while (element && element.tagName !== 'TR') element = element.parentNode;
    return element;
  }
  grid.addEventListener('input', function(event) {
    var row = rowOf(event.target);
    if (row) FKUpdateRow(row);
  }, false);
  grid.addEventListener('change', function(event) {
    var row = rowOf(event.target);
    if (!row) return;
    if (event.target.getAttribute('data-col') === '0') FKItemChosen(row);
    else FKUpdateRow(row);
  }, false);
  var rows = grid.querySelectorAll('tbody tr.fkline');
  for (var i = 0; i < rows.length; i++) FKUpdateRow(rows[i]);
})();
