// Kontavo web access: the payment dialog. Choosing the customer or ticking the refund box asks the
// server for the table of the invoices that may take the payment ("payinvoices"); typing an
// amount in the table chooses "Imputer les montants indiqués ci-dessous".
(function() {
  var block = document.getElementById('payinvoices');
  if (!block) return;
  function refresh() {
    SimpleAjaxCall(block.getAttribute('data-route'),
                   GetParams('dialogform') + 'isComAJAX=1&MainControlId=' + block.getAttribute('data-control'),
                   HandleAjaxJSReturn, function() {}, function() {}, 20000);
  }
  var customer = document.getElementById('101');
  if (customer && customer.tagName === 'SELECT') customer.addEventListener('change', refresh, false);
  var refund = document.getElementById('105');
  if (refund) refund.addEventListener('change', refresh, false);
  block.addEventListener('input', function() {
    var chosen = document.getElementById('302');
    if (chosen) chosen.checked = true;
  }, false);
})();
