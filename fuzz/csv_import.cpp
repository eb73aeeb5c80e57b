// Fuzz target: the reading of spreadsheet tables and their mapping to the fields of customers,
// items and suppliers, over arbitrary bytes. No input may crash or loop the reader; a table read
// is written back and read again to the same cells; the first cell serves as a column map; and
// every cell a field accepts gives a stored value that its exported text stores again unchanged.
#include <cstdint>
#include <string>
#include <vector>

#include "invoice/shared/csvimport.h"
#include "llib/gen/csvtable.h"

namespace {

const LCurrencyFormat kEuro{"€", 3, 2, ",", " "};

void Check(bool condition) {
  if (!condition) __builtin_trap();
}

void CheckRoundTrip(const LCsvTable& table) {
  if (table.header.cells.empty()) return;
  std::string text;
  LCsvTableAppendRow(text, table.header.cells);
  for (const LCsvTableRow& row : table.rows) LCsvTableAppendRow(text, row.cells);
  LCsvTable again;
  Check(LCsvTableParse(text, again, nullptr));
  Check(again.header.cells == table.header.cells && again.rows.size() == table.rows.size());
  for (std::size_t i = 0; i < table.rows.size(); ++i) Check(again.rows[i].cells == table.rows[i].cells);
}

void CheckFields(LPartyKind kind, const LCsvTable& table, std::string_view map) {
  std::vector<std::string> columns, notes;
  if (!LCsvImportMap(kind, table.header.cells, map, columns, notes, nullptr)) return;
  Check(columns.size() == table.header.cells.size() && notes.size() == columns.size());
  for (const LCsvTableRow& row : table.rows)
    for (std::size_t i = 0; i < columns.size() && i < row.cells.size(); ++i) {
      const LPartyField* field = LPartyFieldNamed(kind, columns[i]);
      std::string stored, again;
      if (field == nullptr || !LPartyFieldStore(*field, row.cells[i], kEuro, stored, nullptr)) continue;
      Check(LPartyFieldStore(*field, LPartyFieldText(*field, stored, 2), kEuro, again, nullptr) && again == stored);
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  std::string_view bytes(reinterpret_cast<const char*>(data), size);
  LCsvTable table;
  if (!LCsvTableParse(bytes, table, nullptr)) return 0;
  CheckRoundTrip(table);
  std::string map = table.header.cells.empty() ? std::string() : table.header.cells[0];
  for (LPartyKind kind : {LPartyKind::kCustomer, LPartyKind::kItem, LPartyKind::kSupplier}) {
    CheckFields(kind, table, {});
    CheckFields(kind, table, map);
  }
  return 0;
}
