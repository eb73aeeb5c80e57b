// The OFX statement reader: a bank or credit-card statement downloaded from a bank in OFX (the
// SGML form, "OFXHEADER:100") becomes an LBankStatement. The reconciliation window, the import
// of transactions and the web reconciliation page all read statements through
// LOFXImportTransaction and then match or post its lines.
//
// A file is a header of "NAME:VALUE" lines, ended by a blank line or by the line holding
// "<OFX>", then the body. The body is copied into a temporary file, read by the SGML reader
// (accounts/sgml.h) and walked: each bank message set ("BANKMSGSRSV1": STMTTRNRS, STMTRS,
// BANKACCTFROM) and credit-card message set ("CREDITCARDMSGSRSV1": CCSTMTTRNRS, CCSTMTRS,
// CCACCTFROM) gives the account, the period (BANKTRANLIST's DTSTART and DTEND), the ledger
// balance (LEDGERBAL's BALAMT) and one line per STMTTRN. Investment statements and other message
// sets are skipped.
//
// Two behaviours are kept on purpose, because statements already matched depend on them:
//   - the lines end up in the reverse of the file's order (each is put at the head of the list);
//   - an amount is scaled to minor units in double precision and truncated toward zero into a
//     32-bit integer, so 19.99 (1998.9999999999998 cents) reads as 1998 cents and amounts beyond
//     the 32-bit range do not survive.
#pragma once

#include <string>
#include <string_view>

#include "accounts/bankstatement.h"
#include "llib/gen/datetime.h"

class LProfile;

// Reads the OFX file at path into statement (constructed empty by the caller) with the
// currency digits of profile. view is the window that would parent messages; the reading does
// not use it and it may be null.
// Returns true with error empty when the file was read without a fault. Otherwise error holds
// the message (at most 259 bytes): "Impossible d'ouvrir le fichier OFX." (empty path), "Le
// fichier est vide ou il s'agit du fichier OFX incorrect" (unreadable, no header end, no body),
// "Impossible d'ouvrir le fichier xml : PATH" (the temporary copy), "Erreur de lecture du
// fichier OFX." (no OFX element), or the first SGML error; the statement keeps what was read
// before and despite the fault.
[[nodiscard]] bool LOFXImportTransaction(LProfile& profile, const void* view, std::string_view path,
                                         LBankStatement& statement, std::string& error);

// An OFX date and time, "YYYYMMDDHHMMSS.XXX[-5:EST]" or any leading part of it, as the local
// clock time. Two-digit years below 70 are 20xx. A date alone is taken at 11:59:00. With a time
// zone the time moves to this machine's clock as it stands now (daylight saving included). An
// empty text gives the fields all 0, which is 1899-11-30 00:00:00.
LDateTime OFXDate2Time(std::string_view text);

// An OFX amount in minor units for currencyDigits decimals (3, 2 or 1; any other count leaves
// the amount unscaled): scaled in double precision and truncated toward zero into 32 bits.
// Amounts that do not fit (and NaN) give -2147483648, the value the processor's conversion
// gives them.
long long LOFXAmountToMinorUnits(double amount, int currencyDigits);
