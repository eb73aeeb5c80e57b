// Kontavo web access: sorting a list in the browser. A sortable list carries its sort state
// (data-sortcolumn, data-asc); each header cell with data-sort sorts by its column when clicked,
// the second click reverses. Cells compare by their data-order key, else their text, without
// regard to case; a row without the column's cell comes first. A list that is one page of a longer
// one (data-refilter: the route that refilters it) is sorted by the server instead.
(function() {
  function key(row, column) {
    var cell = row.cells[column];
    if (!cell) return null;
    var order = cell.getAttribute('data-order');
    return (order !== null ? order : cell.textContent).toLowerCase();
  }
  function compare(a, b) {
    if (a === b) return 0;
    if (a === null) return -1;
    if (b === null) return 1;
    return a < b ? -1 : 1;
  }
  function mark(table, column, ascending) {
    var heads = table.tHead.rows[0].cells;
    for (var i = 0; i < heads.length; i++) {
      var target = heads[i].querySelector('span') || heads[i];
      target.classList.remove('hlsortasc');
      target.classList.remove('hlsortdesc');
      if (i === column) target.classList.add(ascending ? 'hlsortasc' : 'hlsortdesc');
    }
  }
  function sortTable(table, column, ascending) {
    var body = table.tBodies[0];
    if (!body) return;
    var rows = Array.prototype.slice.call(body.rows);
    if (rows.length === 1 && rows[0].cells.length === 1 && rows[0].cells[0].colSpan > 1) return;  // empty list
    var indexed = rows.map(function(row, index) { return {row: row, key: key(row, column), index: index}; });
    indexed.sort(function(x, y) {
      var c = compare(x.key, y.key);
      if (!ascending) c = -c;
      return c !== 0 ? c : x.index - y.index;
    });
    for (var i = 0; i < indexed.length; i++) body.appendChild(indexed[i].row);
    table.setAttribute('data-sortcolumn', String(column));
    table.setAttribute('data-asc', ascending ? '1' : '0');
    mark(table, column, ascending);
  }
  function prepare(table) {
    if (!table.tHead || !table.hasAttribute('data-sortcolumn')) return;
    var heads = table.tHead.rows[0].cells;
    mark(table, parseInt(table.getAttribute('data-sortcolumn'), 10), table.getAttribute('data-asc') === '1');
    for (var i = 0; i < heads.length; i++) {
      if (heads[i].getAttribute('data-sort') !== 'true') continue;
      (function(column) {
        heads[column].addEventListener('click', function() {
          var current = parseInt(table.getAttribute('data-sortcolumn'), 10);
          var ascending = current === column ? table.getAttribute('data-asc') !== '1' : true;
          var refilter = table.getAttribute('data-refilter');
          if (refilter && window.ListSortOnServer) ListSortOnServer(refilter, column, ascending);
          else sortTable(table, column, ascending);
        });
      })(i);
    }
  }
  // The lists under root (the document, or a block whose lists were just replaced).
  function prepareAll(root) {
    var tables = (root && root.querySelectorAll ? root : document).querySelectorAll('table.hltbl');
    for (var i = 0; i < tables.length; i++) prepare(tables[i]);
  }
  window.LPrepareSortableTables = prepareAll;
  if (document.readyState === 'loading') document.addEventListener('DOMContentLoaded', function() { prepareAll(); });
  else prepareAll();
})();
