// Recurring invoices and orders on the web (invoice/shared/recurring.h,
// invoice/sales/recurringrecord.h), one set of routes per kind:
//   "invoiceschedule", "orderschedule"          the kind's templates with their next due date;
//                                               with "id" (a document) also the form that makes
//                                               the document a template (first date, period);
//   "invoiceschedulesave", "orderschedulesave"  makes the template (POST: "id", "start",
//                                               "interval");
//   "runrecurringinvoice", "runrecurringorder"  records one occurrence of each due template of
//                                               the kind, as `kontavo recurring run` does.
// The actions go back to the schedule page with what they did, or their refusal, in "msg".
#pragma once

#include "accounts/webpagemainex.h"
#include "invoice/shared/salesdocument.h"

class LWebRecurringPage : public LWebPageMainEx {
 public:
  LWebRecurringPage(LWebletForm& form, LSalesDocumentType type);
  void Generate() override;

 private:
  LSalesDocumentType type_;
};

template <LSalesDocumentType T>
class LWebRecurringPageOf : public LWebRecurringPage {
 public:
  explicit LWebRecurringPageOf(LWebletForm& form) : LWebRecurringPage(form, T) {}
};

// The French text of a period code ("Tous les mois"); "Jamais" for codes never due.
const char* LWebRecurIntervalText(int interval);

void WLRecurringScheduleSave(LWebletForm& form, LSalesDocumentType type);
void WLRecurringRun(LWebletForm& form, LSalesDocumentType type);

template <LSalesDocumentType T>
void WLRecurringScheduleSaveOf(LWebletForm& form) {
  WLRecurringScheduleSave(form, T);
}
template <LSalesDocumentType T>
void WLRecurringRunOf(LWebletForm& form) {
  WLRecurringRun(form, T);
}
