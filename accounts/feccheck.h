// A checker of FEC files (accounts/fec.h), ours or anyone's, applying the rules the tax
// administration's own test tool applies before an audit begins:
//
//   1. the file name is SIRENFECAAAAMMJJ.txt (nine digits, "FEC", a calendar day);
//   2. the header line uses "|" or a tab as separator, and every line the same one;
//   3. the header names the eighteen fields, in order;
//   4. every line has eighteen fields;
//   5. dates are AAAAMMJJ days, amounts are numbers with a decimal comma (or point);
//   6. the mandatory fields are filled: JournalCode, JournalLib, EcritureNum, EcritureDate,
//      CompteNum, CompteLib, PieceRef, PieceDate, EcritureLib, Debit, Credit, ValidDate; and
//      CompAuxLib beside a CompAuxNum, DateLet beside an EcritureLet;
//   7. no line fills both Debit and Credit;
//   8. each entry (JournalCode and EcritureNum) is balanced;
//   9. the whole file is balanced.
//
// Every fault is reported (line number and what is wrong, in French), not only the first. The
// content may be ISO-8859-15 or UTF-8.
#pragma once

#include <string>
#include <string_view>
#include <vector>

struct LFecCheckReport {
  std::vector<std::string> faults;  // one French sentence each, in file order; empty: the file passes
  long long lineCount = 0;          // lines after the header
  long long entryCount = 0;         // distinct (JournalCode, EcritureNum)
  long long debitTotal = 0;         // cents, of the lines whose amounts could be read
  long long creditTotal = 0;

  bool Passed() const { return faults.empty(); }
};

// Checks content as a file called fileName (the name alone, without folder). digits: the
// decimals of amounts (2 for the euro).
LFecCheckReport LFecCheckText(std::string_view fileName, std::string_view content, int digits = 2);
// Reads and checks a file; a file that cannot be read gives one fault.
LFecCheckReport LFecCheckFile(const std::string& path, int digits = 2);
