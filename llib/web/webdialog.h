// LWebDialog: a page holding one form of numbered controls. A control is an integer id; its
// element has id and name equal to the id in decimal, so its value comes back as the parameter
// of that number. Radio buttons are grouped by hundreds: the group of id N is N / 100, posted as
// "rbg<group>" with the chosen button's id (301, 302, 303 -> "rbg3"; 1301 is in "rbg13").
// Values are always read from the current request; InitDialog puts the initial values into the
// request's parameters (SetText, SetRadioCheck, SetCheck) before the controls are written.
//
// Round trip: a GET (or a POST without "submit" and "submitdef") shows the dialog. Every button
// press posts all form values plus "submit" (the button's text) to the same route by AJAX and
// runs the JavaScript that comes back: CmOk's error script, or "window.location = ..." to the
// next page. Pressing Enter in a text field counts as the default button, through "submitdef".
//
//     class LWebNameDialog : public LWebDialog {
//       void Generate() override { AddInput(101, "Nom :", "", 30); }
//       bool CmOk() override {
//         if (GetTextAndTrim(101).empty()) { PopupControlDataInvalid(101, "Veuillez entrer un nom."); return false; }
//         return true;  // then the browser goes to "onok"
//       }
//     };
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "llib/gen/hashtable.h"
#include "llib/web/webpage.h"
#include "llib/web/webupload.h"

class LHtmlList;

inline constexpr unsigned kWebDialogAjaxTimeoutMs = 1200000;

// A button beside OK and Cancel: it runs CmOk, then goes to target (the referring page when
// target is empty), after the question when there is one.
struct LSpecialSubmit {
  std::string text;
  std::string target;
  std::string question;
};

// An entry of a tool bar (AddTools).
struct LWebTool {
  const char* target;
  const char* text;
};

class LWebDialog : public LWebPage {
 public:
  // routeName: the route that shows this dialog and receives its button presses.
  LWebDialog(LWebletForm& form, std::string_view routeName);

  // Entry from the route: first showing or button press.
  void Run();
  // Entry from the raw-POST route of an upload dialog: reads the multipart body (its fields
  // become the request's parameters, its files Upload()), then answers the button press as
  // Run does. A body that cannot be read is answered with a message box.
  void RunUpload();

  // ---- Virtual operations --------------------------------------------------------------------
  // Puts initial values into the controls before the first showing.
  virtual void InitDialog() {}
  // OK pressed: true when done (the browser then goes to "onok"); false after writing error
  // script (PopupControlDataInvalid), and the dialog stays as the user left it.
  virtual bool CmOk() { return true; }
  virtual void CmCancel() {}
  // Adds the enabling rules of the controls (EnableControlRangeOnCheck, ...).
  virtual void EnableControls() {}
  // Script "window.location = '<target>';".
  void Redirect(std::string_view target) override;

  // ---- Set-up --------------------------------------------------------------------------------
  void SetCaption(std::string_view caption) { SetTitle(caption); }
  void SetOkText(std::string_view text) { okText_.assign(text); }
  // An empty text leaves the Cancel button out.
  void SetCancelText(std::string_view text) { cancelText_.assign(text); }
  const std::string& GetOkText() const { return okText_; }
  const std::string& GetCancelText() const { return cancelText_; }
  void SetOkPage(std::string_view page) { okPage_.assign(page); }
  void SetCancelPage(std::string_view page) { cancelPage_.assign(page); }
  void SetFocusControl(int id) { focusControl_ = id; }
  // A check box beside the buttons (the logon page's remember box).
  void SetButtonCheckBox(int id, std::string_view text) {
    buttonCheckId_ = id;
    buttonCheckText_.assign(text);
  }
  void AddSpecialSubmit(std::string_view text, std::string_view target, std::string_view question = {});
  void SetToolTip(int id, std::string_view text);
  std::string GetToolTipText(int id) const;
  // A message shown above the controls.
  void SetMessage(std::string_view message) { message_.assign(message); }
  // The form posts a file upload into a hidden frame instead of AJAX; the route then needs the
  // raw-POST adaptor WLWebUploadDialogRun beside WLWebDialogRun.
  void SetUpload(bool upload) { upload_ = upload; }
  // The largest upload RunUpload reads (kWebletMaxUploadBytes unless set).
  void SetUploadLimit(std::size_t bytes) { uploadLimit_ = bytes; }
  // The files of the upload being answered (RunUpload).
  const LWebletUpload& Upload() const { return uploadedFiles_; }
  void SetControlTableWidth(std::string_view width) { controlTableWidth_.assign(width); }

  // ---- Builders: each writes one row of the control table -----------------------------------
  void StartRow();
  void StartRowSpanRight();
  void EndRow();
  void AddStatic(std::string_view text);
  void AddStaticBold(std::string_view text);
  void AddStaticSmall(std::string_view text);
  // A text field; its value is the request's, else value.
  void AddInput(int id, std::string_view label, std::string_view value, int width,
                std::string_view extra = {});
  void AddInputReadOnly(int id, std::string_view label, std::string_view value, int width);
  void AddInputEmailAddress(int id, std::string_view label, std::string_view value, int width);
  void AddInputPassword(int id, std::string_view label, int width);
  void AddEdit(int id, std::string_view label, int columns, int rows, bool readOnly = false);
  void AddEditReadOnly(int id, std::string_view label, int columns, int rows) { AddEdit(id, label, columns, rows, true); }
  // Ticked when the request carries a non-empty value for id. enableHook: other controls
  // depend on it (enablectls runs on click).
  void AddCheckBox(int id, std::string_view text, bool enableHook = false);
  // The box alone, inside a row the caller started.
  void AddCheckBoxSimple(int id, std::string_view text, bool enableHook = false);
  void AddCheckBoxSupportsDisabled(int id, std::string_view text, bool disabled, bool enableHook = false);
  // Checked when "rbg<id/100>" equals id. ownRow: the button takes a row of its own.
  void AddRadioButton(int id, std::string_view text, bool enableHook = false, bool disabled = false,
                      bool ownRow = true);
  void AddRadioButtonWithCustomOnClick(int id, std::string_view text, std::string_view onClick);
  void AddRadioButtonWithPDL(int id, std::string_view text, int listId, const std::vector<std::string>& texts,
                             const std::vector<std::string>& values);
  // A pull-down list; values empty: the texts are the values.
  void AddPullDownList(int id, std::string_view label, const std::vector<std::string>& texts,
                       const std::vector<std::string>& values = {}, bool enableHook = false,
                       std::string_view tooltip = {});
  // A date field ("YYYY-MM-DD") with the calendar button.
  void AddDateInput(int id, std::string_view label, std::string_view value);
  void AddHiddenField(std::string_view name, std::string_view value);
  void AddHyperLinkSpanRightSmall(int id, std::string_view target, std::string_view text);
  void AddHyperLinkSpanRightSmallOpenNew(int id, std::string_view target, std::string_view text);
  void AddList(LHtmlList& list, int widthPercent = 100, int id = 0);
  void AddVerticalSpace(int lines);
  void StartGroupBox(std::string_view title);
  void EndGroupBox();
  void AddTools(const LWebTool* items, int count);
  // An error line in red across the row.
  void AddRowError(std::string_view text);

  // ---- Values of the current request -----------------------------------------------------------
  std::string GetText(int id) const;
  std::string GetTextAndTrim(int id) const;
  void SetText(int id, std::string_view text);
  void SetInt(int id, int value);
  std::string GetControlValue(std::string_view name) const;
  int GetControlValueInt(int id) const;
  bool IsChecked(int id) const;
  void SetCheck(int id, bool checked);
  // true when the radio button id is the chosen one of its group.
  bool GetRadioCheck(int id) const;
  // The chosen id of the group of id; 0 when none.
  int GetRadioChoice(int id) const;
  void SetRadioCheck(int id);
  std::string PDLGetText(int id) const { return GetText(id); }
  void PDLSetCurSel(int id, std::string_view value) { SetText(id, value); }

  // ---- Enabling rules, as script of enablectls() -------------------------------------------
  void EnableControlRangeOnCheck(int checkId, int firstId, int lastId);
  void EnableControlOnSelectChange(int selectId, std::string_view value, int controlId);
  void EnableControlOnRadioCheck(int radioId, int controlId);
  void AddEnableScript(std::string_view statements) { enableScript_.append(statements); }

  // ---- Answers of a button press ---------------------------------------------------------------
  // Script that shows message in red beside the control's row, scrolls to the top and
  // re-enables the buttons. Outside a button press the message is shown above the controls.
  void PopupControlDataInvalid(int id, std::string_view message);
  void PopupControlDataInvalid(std::string_view idText, std::string_view message);
  // Script that shows message in a message box.
  void PopupBoxError(std::string_view message);
  // Writes script into the answer of a button press.
  void WriteAnswerScript(std::string_view script);
  // The handler wrote its whole answer itself: Run adds nothing.
  void SetAnswerWritten() { answerWritten_ = true; }
  bool IsInSubmit() const { return inSubmit_; }
  const std::string& GetRouteName() const { return routeName_; }

 protected:
  // The first showing: header, form, controls, buttons, script, footer.
  void _PrintDialog();
  void PrintSubmitButtons();
  // The markup of a pull-down list alone, for controls laid out by a derived dialog; values
  // empty: the texts are the values.
  std::string SelectMarkup(int id, const std::vector<std::string>& texts, const std::vector<std::string>& values,
                           bool enableHook, std::string_view tooltip) const;

 private:
  // The round trip after Authenticate.
  void Answer();
  // The script answer to the button whose text is pressed.
  void AnswerPress(const std::string& pressed);
  void RunOkThenGo(std::string_view target);
  std::string RefererTarget() const;
  std::string TargetParam(std::string_view name, std::string_view configured) const;
  // Writes a row: the label cell and the control cell (or only the cells inside a started row).
  void WriteRow(std::string_view labelCell, std::string_view controlCell);
  void NoteControl(int id);
  std::string CheckBoxMarkup(int id, std::string_view text, bool enableHook, bool disabled) const;
  std::string RadioMarkup(int id, std::string_view text, std::string_view onClick, bool disabled) const;

  std::string routeName_;                 // route of this dialog
  std::string okText_ = "  OK  ";         // OK button text (the default button)
  std::string cancelText_ = "Annuler";    // Cancel button text; empty: no Cancel button
  std::vector<LSpecialSubmit> specials_;  // further buttons
  LHashTable toolTips_;                   // "%d" of a control id -> tooltip
  std::string okPage_;                    // target after OK when the request names none
  std::string cancelPage_;                // target after Cancel when the request names none
  int focusControl_ = 0;                  // control focused first; 0: the first one written
  int firstControl_ = 0;                  // first control written
  int buttonCheckId_ = 0;                 // check box beside the buttons; 0: none
  std::string buttonCheckText_;
  std::string message_;                   // shown above the controls
  std::string controlTableWidth_ = "100%";
  std::string enableScript_;              // statements of enablectls()
  bool upload_ = false;                   // the form uploads a file
  std::size_t uploadLimit_ = kWebletMaxUploadBytes;  // bytes RunUpload reads at most
  LWebletUpload uploadedFiles_;           // files of the upload being answered
  bool inRow_ = false;                    // a row was started by StartRow
  bool answerWritten_ = false;            // a handler wrote its own answer
  bool inSubmit_ = false;                 // CmOk or CmCancel is running
};

// Route adaptor of a dialog class: builds the dialog on the request and runs it.
template <class Dialog>
void WLWebDialogRun(LWebletForm& form) {
  Dialog dialog(form);
  dialog.Run();
}

// Raw-POST route adaptor of an upload dialog:
//     LWebletInstallScript("loadfile", WLWebDialogRun<LWebLoadFileDialog>);
//     LWebletInstallPostScript("loadfile", WLWebUploadDialogRun<LWebLoadFileDialog>);
template <class Dialog>
void WLWebUploadDialogRun(LWebletForm& form) {
  Dialog dialog(form);
  dialog.RunUpload();
}
