// Kontavo web access: the date picker of date fields ("YYYY-MM-DD"). NewCalendar(id) opens a
// month under the field; choosing a day writes it into the field.
var kontavoCalendar = null;

function NewCalendar(inputId) {
  var input = document.getElementById(String(inputId));
  if (!input) return;
  if (kontavoCalendar) { kontavoCalendar.parentNode.removeChild(kontavoCalendar); kontavoCalendar = null; }
  var months = ['janvier', 'février', 'mars', 'avril', 'mai', 'juin', 'juillet', 'août', 'septembre', 'octobre',
                'novembre', 'décembre'];
  var days = ['lu', 'ma', 'me', 'je', 've', 'sa', 'di'];
  var match = /^(\d{4})-(\d{2})-(\d{2})$/.exec(input.value);
  var shown = match ? new Date(+match[1], +match[2] - 1, 1) : new Date();
  shown.setDate(1);
  var box = document.createElement('div');
  box.className = 'calendar';
  function pad(n) { return (n < 10 ? '0' : '') + n; }
  function draw() {
    var year = shown.getFullYear(), month = shown.getMonth();
    var html = '<div class=calhead><span data-step=-1>&lsaquo;</span><b>' + months[month] + ' ' + year +
               '</b><span data-step=1>&rsaquo;</span></div><table><tr>';
    for (var d = 0; d < 7; d++) html += '<th>' + days[d] + '</th>';
    html += '</tr><tr>';
    var first = (new Date(year, month, 1).getDay() + 6) % 7;
    var count = new Date(year, month + 1, 0).getDate();
    var today = new Date();
    for (var blank = 0; blank < first; blank++) html += '<td></td>';
    for (var day = 1; day <= count; day++) {
      var isToday = today.getFullYear() === year && today.getMonth() === month && today.getDate() === day;
      html += '<td data-day=' + day + (isToday ? ' class=today' : '') + '>' + day + '</td>';
      if ((first + day) % 7 === 0 && day < count) html += '</tr><tr>';
    }
    box.innerHTML = html + '</tr></table>';
  }
  box.addEventListener('click', function(event) {
    var target = event.target;
    if (target.getAttribute('data-step')) {
      shown.setMonth(shown.getMonth() + parseInt(target.getAttribute('data-step'), 10));
      draw();
    } else if (target.getAttribute('data-day')) {
      input.value = shown.getFullYear() + '-' + pad(shown.getMonth() + 1) + '-' + pad(+target.getAttribute('data-day'));
      box.parentNode.removeChild(box);
      kontavoCalendar = null;
      if (input.onchange) input.onchange();
    }
    event.stopPropagation();
  });
  draw();
  var rect = input.getBoundingClientRect();
  box.style.left = (rect.left + window.scrollX) + 'px';
  box.style.top = (rect.bottom + window.scrollY + 4) + 'px';
  document.body.appendChild(box);
  kontavoCalendar = box;
}

document.addEventListener('click', function(event) {
  if (kontavoCalendar && !kontavoCalendar.contains(event.target) && event.target.className !== 'calbutton') {
    kontavoCalendar.parentNode.removeChild(kontavoCalendar);
    kontavoCalendar = null;
  }
});
