// Kontavo web access: the calls of the pages to their own routes. A dialog posts its values and
// the pressed button by AJAX and runs the JavaScript that comes back.

document.pressed = '';

// LAddEventListener(window, 'onload', fn): the event name may carry its "on".
function LAddEventListener(target, eventName, handler) {
  var name = eventName.indexOf('on') === 0 ? eventName.substring(2) : eventName;
  target.addEventListener(name, handler, false);
}

// POSTs params (already encoded "name=value&...") to url. onSuccess gets the answer text; onFailure
// runs on an error answer or a broken connection; onTimeout after timeoutMs without answer.
function SimpleAjaxCall(url, params, onSuccess, onFailure, onTimeout, timeoutMs) {
  var request = new XMLHttpRequest();
  var finished = false;
  request.open('POST', url, true);
  request.setRequestHeader('Content-Type', 'application/x-www-form-urlencoded; charset=UTF-8');
  request.timeout = timeoutMs || 0;
  request.onreadystatechange = function() {
    if (request.readyState !== 4 || finished) return;
    if (request.status === 0) return;  // left to onerror or ontimeout
    finished = true;
    if (request.status === 200) onSuccess(request.responseText);
    else if (onFailure) onFailure(request.status);
  };
  request.onerror = function() { if (!finished) { finished = true; if (onFailure) onFailure(0); } };
  request.ontimeout = function() { if (!finished) { finished = true; if (onTimeout) onTimeout(); } };
  request.send(params);
}

// "name=value" of one control, encoded; '' when it sends nothing (unticked box, button, no name).
function GetArg(element) {
  if (!element || !element.name || element.disabled) return '';
  var type = (element.type || '').toLowerCase();
  if (type === 'submit' || type === 'button' || type === 'file' || type === 'reset') return '';
  if ((type === 'checkbox' || type === 'radio') && !element.checked) return '';
  var value = element.value;
  if (type === 'checkbox' && !element.hasAttribute('value')) value = 'on';
  return encodeURIComponent(element.name) + '=' + encodeURIComponent(value);
}

// Every value of the form, each followed by '&'.
function GetParams(formId) {
  var form = document.getElementById(formId);
  var params = '';
  if (!form) return params;
  for (var i = 0; i < form.elements.length; i++) {
    var arg = GetArg(form.elements[i]);
    if (arg.length !== 0) params += arg + '&';
  }
  return params;
}

// Runs the script answer of a button press.
function HandleAjaxJSReturn(text) {
  document.pressed = '';
  (new Function(text))();
}

// Takes away the red message of an earlier refusal, once the control's value was accepted.
function ClearControlError() {
  var previous = document.getElementById('errorTag');
  if (previous) previous.parentNode.removeChild(previous);
  var marker = document.getElementById('invalidTag');
  if (marker) marker.parentNode.removeChild(marker);
  var invalid = document.querySelectorAll('.invalid');
  for (var k = 0; k < invalid.length; k++) invalid[k].classList.remove('invalid');
}

// The red message beside a control's row, replacing an earlier one.
function ShowControlError(controlId, message) {
  ClearControlError();
  var control = document.getElementById(controlId);
  var anchor = control;
  while (anchor && anchor.tagName !== 'TR') anchor = anchor.parentNode;
  var lines = String(message).split('\n');
  var cell = document.createElement('td');
  // As wide as the control's row, so that a message in a table of several columns does not wrap.
  cell.colSpan = anchor && anchor.cells.length > 2 ? anchor.cells.length : 2;
  cell.className = 'rowerror';
  for (var i = 0; i < lines.length; i++) {
    if (i > 0) cell.appendChild(document.createElement('br'));
    cell.appendChild(document.createTextNode(lines[i]));
  }
  var row = document.createElement('tr');
  row.id = 'errorTag';
  row.className = 'rowerror';
  row.appendChild(cell);
  if (anchor) {
    anchor.parentNode.insertBefore(row, anchor);
  } else {
    var table = document.getElementById('controltable');
    if (table) table.insertBefore(row, table.firstChild);
  }
  if (control) {
    control.classList.add('invalid');
    var mark = document.createElement('span');
    mark.id = 'invalidTag';
    mark.className = 'rowerror';
    mark.textContent = ' !';
    control.parentNode.insertBefore(mark, control.nextSibling);
    try { control.focus(); } catch (e) {}
  }
}

// Enables or disables the controls first to last (ids).
function EnableControlRange(first, last, enabled) {
  for (var id = first; id <= last; id++) {
    var element = document.getElementById(String(id));
    if (element) element.disabled = !enabled;
  }
}

// Replaced by dialogs whose controls depend on one another.
function enablectls() {}

function DisableSubmits(bDisable) {
  var submits = document.getElementsByName('submit');
  for (var i = 0; i < submits.length; i++) submits[i].disabled = bDisable;
}

// Puts text into the element id, when the page has one (the answers of the small AJAX helpers).
function LShowText(id, text) {
  var element = document.getElementById(id);
  if (element) element.textContent = text;
}
// Sets the control id to value when it holds nothing yet.
function LSetIfEmpty(id, value) {
  var element = document.getElementById(String(id));
  if (element && element.value === '') element.value = value;
}
// A change of the control id asks route, with name=its value and the dialog's values, and runs
// the answer.
function LAjaxOnChange(id, route, name) {
  var element = document.getElementById(String(id));
  if (!element) return;
  var ask = function() {
    SimpleAjaxCall(route, GetParams('dialogform') + name + '=' + encodeURIComponent(element.value),
                   HandleAjaxJSReturn, function() {}, function() {}, 20000);
  };
  element.addEventListener('change', ask, false);
  if (element.value !== '') ask();
}

// The document lists with a period: a change in the filter bar (form "listfilter") asks the
// list's refilter route, whose answer calls ListFilterShow.
function ListRefilter(route) {
  SimpleAjaxCall(route, GetParams('listfilter'), HandleAjaxJSReturn, null, null, 120000);
  return false;
}
// Puts the filter's values and the new list block in place, and makes the browser's address the
// filtered list's, so that reloading or going back shows the same list.
function ListFilterShow(periodCode, from, to, blockHtml, address) {
  var form = document.getElementById('listfilter');
  if (form) {
    form.elements['prd'].value = periodCode;
    form.elements['from'].value = from;
    form.elements['to'].value = to;
  }
  var block = document.getElementById('listblock');
  if (block) {
    block.innerHTML = blockHtml;
    if (window.LPrepareSortableTables) window.LPrepareSortableTables(block);
  }
  if (window.history && window.history.replaceState) window.history.replaceState(null, '', address);
}
// A sortable header of a paged list sorts on the server: the whole list, not only the page.
function ListSortOnServer(route, column, ascending) {
  var form = document.getElementById('listfilter');
  if (!form) return;
  form.elements['iCol'].value = String(column);
  form.elements['bAsc'].value = ascending ? '1' : '0';
  ListRefilter(route);
}
// The period dialog: a named period fills the dates ("prdselchange", or the list's own route);
// typed dates make the period custom.
function PeriodDialogWire(periodId, fromId, toId, selectRoute) {
  var period = document.getElementById(String(periodId));
  if (!period) return;
  period.addEventListener('change', function() {
    SimpleAjaxCall(selectRoute || 'prdselchange', 'prd=' + encodeURIComponent(period.value), HandleAjaxJSReturn, null, null, 30000);
  });
  [fromId, toId].forEach(function(id) {
    var input = document.getElementById(String(id));
    if (input) input.addEventListener('change', function() { period.value = 'custom'; });
  });
}

// File upload into the hidden frame "uploadIFrame": its answer is script, as for AJAX. While the
// file travels, the route "uploadProgress" is asked every half second how much has arrived; the
// upload is known there by the id added to the form's address.
var uploadRunning = false;
var uploadTimer = null;
var uploadId = '';
function uploadStatusElement() { return document.getElementById('uploadStatus'); }
function setUploadStatus(text, withCancel) {
  var status = uploadStatusElement();
  if (!status) return;
  status.textContent = text;
  if (withCancel) {
    var link = document.createElement('a');
    link.href = '#';
    link.className = 'uploadcancel';
    link.textContent = 'Annuler l\'envoi';
    link.onclick = function() { cancelUpload(); return false; };
    status.appendChild(document.createTextNode(' '));
    status.appendChild(link);
  }
}
function stopUploadPolling() {
  if (uploadTimer !== null) clearInterval(uploadTimer);
  uploadTimer = null;
}
// The answer of "uploadProgress": bytes received and expected, and whether reading has ended.
function ShowUploadProgress(received, total, finished) {
  if (!uploadRunning) return;
  if (total > 0 && !finished) setUploadStatus('Envoi du fichier : ' + Math.floor(received * 100 / total) + ' %', true);
  else if (finished) setUploadStatus('Fichier reçu, traitement en cours…', false);
}
function startUpload() {
  var form = document.getElementById('dialogform');
  uploadId = String(Date.now()) + '-' + Math.floor(Math.random() * 1e9);
  if (form) {
    var action = form.getAttribute('action').replace(/[?&]uploadId=[^&]*/, '');
    form.setAttribute('action', action + (action.indexOf('?') < 0 ? '?' : '&') + 'uploadId=' + uploadId);
  }
  uploadRunning = true;
  setUploadStatus('Envoi du fichier en cours…', true);
  // The buttons are disabled only once the browser has taken their values into the form.
  setTimeout(function() { if (uploadRunning) DisableSubmits(true); }, 0);
  stopUploadPolling();
  uploadTimer = setInterval(function() {
    SimpleAjaxCall('uploadProgress', 'uploadId=' + encodeURIComponent(uploadId),
                   function(text) { (new Function(text))(); }, null, null, 5000);
  }, 500);
  return true;
}
function uploadDone() {
  if (!uploadRunning) return;
  uploadRunning = false;
  stopUploadPolling();
  var frame = document.getElementById('uploadIFrame');
  var text = '';
  try { text = frame.contentWindow.document.body.textContent; } catch (e) {}
  setUploadStatus('', false);
  DisableSubmits(false);
  if (text) HandleAjaxJSReturn(text);
}
function cancelUpload() {
  var frame = document.getElementById('uploadIFrame');
  uploadRunning = false;
  stopUploadPolling();
  if (frame) {
    try { frame.contentWindow.stop(); } catch (e) {}
    frame.src = 'about:blank';
  }
  setUploadStatus('Envoi annulé.', false);
  DisableSubmits(false);
}

// The page head is fixed text without a viewport line; phones get it here so that pages are laid
// out for their width rather than shrunk.
(function() {
  if (document.querySelector('meta[name=viewport]')) return;
  var meta = document.createElement('meta');
  meta.name = 'viewport';
  meta.content = 'width=device-width, initial-scale=1';
  document.head.appendChild(meta);
})();

// A question of the books asked over the page (accounts/webquestion.h): confirming sends the
// same button press again, carrying the answer in the hidden field "param".
function AskQuestion(param, text, title, confirmText, cancelText, offersDontShow, pressed) {
  var old = document.getElementById('questionbox');
  if (old) old.parentNode.removeChild(old);
  var stale = document.getElementById('errorTag');  // an earlier refusal no longer holds
  if (stale) stale.parentNode.removeChild(stale);
  var box = document.createElement('div');
  box.id = 'questionbox';
  box.className = 'questionbox';
  var panel = document.createElement('div');
  panel.className = 'questionpanel';
  panel.setAttribute('role', 'dialog');
  var heading = document.createElement('div');
  heading.className = 'questiontitle';
  heading.textContent = title || 'Question';
  panel.appendChild(heading);
  var body = document.createElement('p');
  body.className = 'questiontext';
  body.textContent = text;
  panel.appendChild(body);
  var dontShow = null;
  if (offersDontShow) {
    var label = document.createElement('label');
    dontShow = document.createElement('input');
    dontShow.type = 'checkbox';
    label.appendChild(dontShow);
    label.appendChild(document.createTextNode('Ne plus afficher ce message'));
    panel.appendChild(label);
  }
  var form = document.getElementById('dialogform');
  function answer(name, value) {
    var field = document.getElementsByName(name)[0];
    if (!field) {
      field = document.createElement('input');
      field.type = 'hidden';
      field.name = name;
      form.appendChild(field);
    }
    field.value = value;
  }
  var buttons = document.createElement('div');
  buttons.className = 'questionbuttons';
  var yes = document.createElement('button');
  yes.type = 'button';
  yes.id = 'questionconfirm';
  yes.textContent = confirmText;
  yes.onclick = function() {
    answer(param, '1');
    if (dontShow && dontShow.checked) answer(param + 'd', '1');
    box.parentNode.removeChild(box);
    document.pressed = pressed;
    CmSubmit();
  };
  var no = document.createElement('button');
  no.type = 'button';
  no.id = 'questioncancel';
  no.textContent = cancelText;
  no.onclick = function() { box.parentNode.removeChild(box); DisableSubmits(false); };
  buttons.appendChild(yes);
  buttons.appendChild(no);
  panel.appendChild(buttons);
  box.appendChild(panel);
  document.body.appendChild(box);
  yes.focus();
}

// A long operation of the books running on the server (llib/web/webjob.h): asks the page's route
// how far it has come every 300 ms and shows it in the element progressId, until the answer
// (script) comes back.
function PollJob(route, controlId, jobId, progressId) {
  var params = 'isComAJAX=1&MainControlId=' + controlId + '&job=' + encodeURIComponent(jobId);
  SimpleAjaxCall(route, params, function(text) { (new Function(text))(); },
                 function() { DisableSubmits(false); }, function() { DisableSubmits(false); }, 60000);
}
function ShowJobProgress(progressId, text, route, controlId, jobId) {
  var element = document.getElementById(progressId);
  if (element) element.textContent = text;
  setTimeout(function() { PollJob(route, controlId, jobId, progressId); }, 300);
}
