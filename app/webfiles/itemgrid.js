// Kontavo web access: the item-line grid of the sales documents' dialogs. The amount of each
// line is worked out as the user types (quantity, 1 when empty, times the unit price, less the
// line discount); choosing an item code fills in the item's description and price when they are
// empty; "Ajouter une ligne" adds an empty row numbered after the others; the cross empties a row
// (an empty row is not saved). The document's totals (element "fktotals") are asked of the server
// a moment after each change, so that they round exactly as the saved document will.

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

function FKItemChosen(row) {
  var cells = FKCells(row);
  var options = document.querySelectorAll('#fkitems option');
  for (var i = 0; i < options.length; i++) {
    if (options[i].value !== cells['0'].value) continue;
    if (cells['1'].value === '') cells['1'].value = options[i].getAttribute('data-description');
    if (cells['3'].value === '') cells['3'].value = options[i].getAttribute('data-price');
    break;
  }
  FKUpdateRow(row);
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

(function() {
  var form = document.getElementById('dialogform');
  if (form) {
    form.addEventListener('input', FKRefreshTotals, false);
    form.addEventListener('change', FKRefreshTotals, false);
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
