// The control builders of LWebDialog: each writes one row of the control table, a label cell and
// a control cell, with the fixed markup that the page scripts (ajax.js) rely on.
#include "llib/web/webdialog.h"
#include "llib/web/webformat.h"
#include "llib/web/webletform.h"
#include "llib/web/weblist.h"

namespace {

std::string Text(std::string_view text) { return std::string(text); }

}  // namespace

void LWebDialog::NoteControl(int id) {
  if (firstControl_ == 0) firstControl_ = id;
}

void LWebDialog::WriteRow(std::string_view labelCell, std::string_view controlCell) {
  std::string row;
  if (!inRow_) row += "<tr>";
  row += "<td>";
  row += labelCell;
  row += "</td><td>";
  row += controlCell;
  row += "</td>";
  if (!inRow_) row += "</tr>";
  form_.Write(row);
}

void LWebDialog::StartRow() {
  form_.Write("<tr>");
  inRow_ = true;
}

void LWebDialog::StartRowSpanRight() {
  form_.Write("<tr><td colspan=2 style='text-align:right;'>");
  inRow_ = true;
}

void LWebDialog::EndRow() {
  form_.Write("</tr>");
  inRow_ = false;
}

void LWebDialog::AddStatic(std::string_view text) {
  form_.Write("<tr><td colspan=2 class=dlgstatic>" + LHtmlEscape(text) + "</td></tr>");
}

void LWebDialog::AddStaticBold(std::string_view text) {
  form_.Write("<tr><td colspan=2 class=dlgstatic><b>" + LHtmlEscape(text) + "</b></td></tr>");
}

void LWebDialog::AddStaticSmall(std::string_view text) {
  form_.Write("<tr><td colspan=2 class='dlgstatic dlgsmall'>" + LHtmlEscape(text) + "</td></tr>");
}

void LWebDialog::AddInput(int id, std::string_view label, std::string_view value, int width,
                          std::string_view extra) {
  NoteControl(id);
  std::string current = form_.GetParam(std::to_string(id), value);
  std::string tip = LHtmlEscape(GetToolTipText(id));
  std::string labelText = Text(label);
  WriteRow(LWebFormat("<label for=%d>%H</label>", id, labelText.c_str()),
           LWebFormat("<input id=%d name=%d type=text value='%H' size=%d title='%s' %s>", id, id, current.c_str(),
                      width, tip.c_str(), Text(extra).c_str()));
}

void LWebDialog::AddInputReadOnly(int id, std::string_view label, std::string_view value, int width) {
  AddInput(id, label, value, width, "readonly");
}

void LWebDialog::AddInputEmailAddress(int id, std::string_view label, std::string_view value, int width) {
  AddInput(id, label, value, width, "autocomplete=email inputmode=email autocapitalize=off spellcheck=false");
}

void LWebDialog::AddInputPassword(int id, std::string_view label, int width) {
  NoteControl(id);
  std::string current = GetText(id);
  std::string tip = LHtmlEscape(GetToolTipText(id));
  std::string labelText = Text(label);
  WriteRow(LWebFormat("<label for=%d>%H</label>", id, labelText.c_str()),
           LWebFormat("<input id=%d name=%d type=password value='%H' size=%d title='%s' autocomplete=off>", id,
                      id, current.c_str(), width, tip.c_str()));
}

void LWebDialog::AddEdit(int id, std::string_view label, int columns, int rows, bool readOnly) {
  NoteControl(id);
  std::string current = GetText(id);
  std::string labelText = Text(label);
  WriteRow(LWebFormat("<label for=%d>%H</label>", id, labelText.c_str()),
           LWebFormat("<textarea id=%d name=%d cols=%d rows=%d%s>%H</textarea>", id, id, columns, rows,
                      readOnly ? " readonly" : "", current.c_str()));
}

std::string LWebDialog::CheckBoxMarkup(int id, std::string_view text, bool enableHook, bool disabled) const {
  std::string tip = GetToolTipText(id);
  std::string attributes = IsChecked(id) ? " checked" : "";
  std::string hook = enableHook ? " onclick='enablectls()'" : "";
  if (disabled) hook += " disabled";
  std::string label = Text(text);
  return LWebFormat("<label><input type=checkbox title='%H' id=%d name=%d%s%s>%H</label>", tip.c_str(), id, id,
                    attributes.c_str(), hook.c_str(), label.c_str());
}

void LWebDialog::AddCheckBox(int id, std::string_view text, bool enableHook) {
  NoteControl(id);
  WriteRow("", CheckBoxMarkup(id, text, enableHook, false));
}

void LWebDialog::AddCheckBoxSimple(int id, std::string_view text, bool enableHook) {
  NoteControl(id);
  form_.Write(CheckBoxMarkup(id, text, enableHook, false));
}

void LWebDialog::AddCheckBoxSupportsDisabled(int id, std::string_view text, bool disabled, bool enableHook) {
  NoteControl(id);
  WriteRow("", CheckBoxMarkup(id, text, enableHook, disabled));
}

std::string LWebDialog::RadioMarkup(int id, std::string_view text, std::string_view onClick, bool disabled) const {
  std::string tip = GetToolTipText(id);
  std::string label = Text(text);
  std::string click = Text(onClick);
  return LWebFormat("<label><input type=radio title='%H' name=rbg%d id=%d value=%d%s%s%s>%H</label>", tip.c_str(),
                    id / 100, id, id, GetRadioCheck(id) ? " checked" : "", click.c_str(),
                    disabled ? " disabled" : "", label.c_str());
}

void LWebDialog::AddRadioButton(int id, std::string_view text, bool enableHook, bool disabled, bool ownRow) {
  NoteControl(id);
  std::string markup = RadioMarkup(id, text, enableHook ? " onclick='enablectls()'" : "", disabled);
  if (ownRow) WriteRow("", markup);
  else form_.Write(markup);
}

void LWebDialog::AddRadioButtonWithCustomOnClick(int id, std::string_view text, std::string_view onClick) {
  NoteControl(id);
  WriteRow("", RadioMarkup(id, text, " onclick='" + LHtmlEscape(onClick) + "'", false));
}

std::string LWebDialog::SelectMarkup(int id, const std::vector<std::string>& texts,
                                     const std::vector<std::string>& values, bool enableHook,
                                     std::string_view tooltip) const {
  std::string current = GetText(id);
  std::string tip = Text(tooltip.empty() ? std::string_view(GetToolTipText(id)) : tooltip);
  std::string html = LWebFormat("<select id=%d name=%d title='%H'%s>", id, id, tip.c_str(),
                                enableHook ? " onchange='enablectls()'" : "");
  for (std::size_t i = 0; i < texts.size(); ++i) {
    const std::string& value = i < values.size() ? values[i] : texts[i];
    html += LWebFormat("<option value='%H'%s>%H</option>", value.c_str(), value == current ? " selected" : "",
                       texts[i].c_str());
  }
  return html + "</select>";
}

void LWebDialog::AddRadioButtonWithPDL(int id, std::string_view text, int listId, const std::vector<std::string>& texts,
                                       const std::vector<std::string>& values) {
  NoteControl(id);
  WriteRow("", RadioMarkup(id, text, "", false) + " " + SelectMarkup(listId, texts, values, false, {}));
}

void LWebDialog::AddPullDownList(int id, std::string_view label, const std::vector<std::string>& texts,
                                 const std::vector<std::string>& values, bool enableHook, std::string_view tooltip) {
  NoteControl(id);
  std::string labelText = Text(label);
  WriteRow(LWebFormat("<label for=%d>%H</label>", id, labelText.c_str()),
           SelectMarkup(id, texts, values, enableHook, tooltip));
}

void LWebDialog::AddDateInput(int id, std::string_view label, std::string_view value) {
  NoteControl(id);
  UseDatePicker();
  std::string current = form_.GetParam(std::to_string(id), value);
  std::string labelText = Text(label);
  WriteRow(LWebFormat("<label for=%d>%H</label>", id, labelText.c_str()),
           LWebFormat("<input id=%d name=%d type=text value='%H' size=12 class=dateinput>"
                      "<img src=cal.gif class=calbutton alt='Calendrier' title='Calendrier' "
                      "onclick=\"NewCalendar('%d')\">",
                      id, id, current.c_str(), id));
}

void LWebDialog::AddHiddenField(std::string_view name, std::string_view value) {
  std::string nameText = Text(name);
  std::string valueText = Text(value);
  form_.Write(LWebFormat("<input type=hidden name='%H' value='%H'>", nameText.c_str(), valueText.c_str()));
}

void LWebDialog::AddHyperLinkSpanRightSmall(int id, std::string_view target, std::string_view text) {
  std::string targetText = Text(target);
  std::string linkText = Text(text);
  form_.Write(LWebFormat("<tr><td colspan=2 class=linksmall><a id=%d href='%H'>%H</a></td></tr>", id,
                         targetText.c_str(), linkText.c_str()));
}

void LWebDialog::AddHyperLinkSpanRightSmallOpenNew(int id, std::string_view target, std::string_view text) {
  std::string targetText = Text(target);
  std::string linkText = Text(text);
  form_.Write(LWebFormat("<tr><td colspan=2 class=linksmall><a id=%d href='%H' target=_blank>%H</a></td></tr>", id,
                         targetText.c_str(), linkText.c_str()));
}

void LWebDialog::AddList(LHtmlList& list, int widthPercent, int id) {
  UseListScript();
  form_.Write("<tr><td colspan=2>");
  list.Write(form_, widthPercent, id, false);
  form_.Write("</td></tr>");
}

void LWebDialog::AddVerticalSpace(int lines) {
  form_.wfprintf("<tr><td colspan=2 style='height:%dem'></td></tr>", lines);
}

void LWebDialog::StartGroupBox(std::string_view title) {
  std::string titleText = Text(title);
  form_.wfprintf("<tr><td colspan=2><fieldset class=groupbox><legend>%H</legend><table class=grouptable>",
                 titleText.c_str());
}

void LWebDialog::EndGroupBox() { form_.Write("</table></fieldset></td></tr>"); }

void LWebDialog::AddTools(const LWebTool* items, int count) {
  std::string bar = "<tr><td colspan=2 class=toolbar>";
  for (int i = 0; i < count; ++i)
    bar += LWebFormat("<a href='%H' class=toolbutton>%H</a>", items[i].target, items[i].text);
  form_.Write(bar + "</td></tr>");
}

void LWebDialog::AddRowError(std::string_view text) {
  std::string message = Text(text);
  form_.wfprintf("<tr><td colspan=2><font color=#a00000>%H</font></td></tr>", message.c_str());
}

// ---- Enabling rules -------------------------------------------------------------------------------

void LWebDialog::EnableControlRangeOnCheck(int checkId, int firstId, int lastId) {
  enableScript_ += LWebFormat(
      "EnableControlRange(%d, %d, document.getElementById('%d') != null && document.getElementById('%d').checked);",
      firstId, lastId, checkId, checkId);
}

void LWebDialog::EnableControlOnSelectChange(int selectId, std::string_view value, int controlId) {
  enableScript_ += LWebFormat(
      "EnableControlRange(%d, %d, document.getElementById('%d') != null && document.getElementById('%d').value == '%s');",
      controlId, controlId, selectId, selectId, LJScriptEscape(value).c_str());
}

void LWebDialog::EnableControlOnRadioCheck(int radioId, int controlId) {
  enableScript_ += LWebFormat(
      "EnableControlRange(%d, %d, document.getElementById('%d') != null && document.getElementById('%d').checked);",
      controlId, controlId, radioId, radioId);
}
