#include "invoice/shared/csvimport.h"

#include <algorithm>
#include <set>

#include "invoice/shared/profile.h"
#include "llib/gen/filestore.h"
#include "llib/gen/filestoreindex.h"
#include "llib/gen/optionalerror.h"
#include "llib/gen/process.h"
#include "llib/gen/record.h"

namespace {

constexpr std::string_view kIgnored = "-";

// ---- The map from columns to fields -----------------------------------------------------------

// The field a name given by the user means: "Code", "-", or a field of kind by its own name or a
// header that names it. Empty when none.
std::string FieldOfName(LPartyKind kind, std::string_view name) {
  if (name == kKeyColumn || name == kIgnored) return std::string(name);
  std::string wanted = LPartyNormalizeHeader(name);
  if (wanted.empty()) return {};
  auto among = [&](std::string_view headers) {
    while (!headers.empty()) {
      std::size_t bar = headers.find('|');
      if (LPartyNormalizeHeader(headers.substr(0, bar)) == wanted) return true;
      headers = bar == std::string_view::npos ? std::string_view() : headers.substr(bar + 1);
    }
    return false;
  };
  for (const LPartyField& field : LPartyFields(kind))
    if (LPartyNormalizeHeader(field.name) == wanted) return std::string(field.name);
  if (among(LPartyKeyHeaders(kind))) return std::string(kKeyColumn);
  for (const LPartyField& field : LPartyFields(kind))
    if (among(field.headers)) return std::string(field.name);
  return {};
}

struct MapEntry {
  std::string column;  // a header as typed, or a column number
  std::string field;   // "Code", "-" or a field name
};

bool ParseMap(LPartyKind kind, std::string_view map, std::vector<MapEntry>& entries, std::string* error) {
  while (!map.empty()) {
    std::size_t comma = map.find(',');
    std::string_view pair = map.substr(0, comma);
    map = comma == std::string_view::npos ? std::string_view() : map.substr(comma + 1);
    std::size_t equals = pair.rfind('=');
    if (equals == std::string_view::npos || equals == 0) {
      return LFail(error, "Correspondance invalide : " + std::string(pair) + " (COLONNE=CHAMP attendu).");
    }
    std::string field = FieldOfName(kind, pair.substr(equals + 1));
    if (field.empty() || LPartyFieldIsComputed(kind, field)) {
      return LFail(error, "Champ inconnu dans la correspondance : " + std::string(pair.substr(equals + 1)) + ".");
    }
    entries.push_back({std::string(pair.substr(0, equals)), field});
  }
  return true;
}

// Which field each column fills: "" for a column left out.
bool MapColumns(LPartyKind kind, const std::vector<std::string>& header, const std::vector<MapEntry>& map,
                std::vector<std::string>& columns, std::vector<std::string>& notes, std::string* error) {
  columns.assign(header.size(), {});
  int keyColumn = -1;
  std::set<std::string> taken;
  for (std::size_t i = 0; i < header.size(); ++i) {
    std::string field;
    for (const MapEntry& entry : map)
      if (entry.column == header[i] || entry.column == std::to_string(i + 1)) field = entry.field;
    if (field.empty()) field = FieldOfName(kind, header[i]);
    std::string shown = header[i].empty() ? "colonne " + std::to_string(i + 1) : header[i];
    if (field.empty() || field == kIgnored) {
      notes.push_back(shown + " : ignorée");
      continue;
    }
    if (!taken.insert(field).second) {
      notes.push_back(shown + " : ignorée (" + field + " vient d'une autre colonne)");
      continue;
    }
    columns[i] = field;
    if (field == kKeyColumn) keyColumn = static_cast<int>(i);
    notes.push_back(shown + " -> " + field);
  }
  if (taken.empty()) {
    std::string names;
    for (const std::string& cell : header) names += (names.empty() ? "" : ", ") + cell;
    return LFail(error, "Aucune colonne reconnue dans l'en-tête (" + names +
                            ") ; indiquez les colonnes avec une correspondance (--map).");
  }
  // Parties without a code are known by their name, as documents name them.
  bool byName = kind == LPartyKind::kCustomer || kind == LPartyKind::kSupplier;
  if (keyColumn < 0 && !(byName && taken.count("Name"))) {
    return LFail(error, "Aucune colonne ne donne la clé (Code) ; indiquez-la avec une correspondance (--map).");
  }
  return true;
}

// ---- Rows -------------------------------------------------------------------------------------

struct RowInput {
  int line = 0;
  std::string key;
  std::vector<std::pair<std::string, std::string>> fields;  // field, typed text
};

// The row's key and fields; false with the reason when the row cannot go in.
bool ReadRow(LPartyKind kind, const LCurrencyFormat& currency, const LCsvTableRow& row, const std::vector<std::string>& columns,
             int keyColumn, RowInput& input, std::string& reason) {
  input.line = row.line;
  for (std::size_t i = 0; i < columns.size(); ++i) {
    if (columns[i].empty() || static_cast<int>(i) == keyColumn) continue;
    std::string text = i < row.cells.size() ? row.cells[i] : std::string();
    const LPartyField* field = LPartyFieldNamed(kind, columns[i]);
    std::string stored;
    if (field != nullptr && !LPartyFieldStore(*field, text, currency, stored, &reason)) return false;
    if (columns[i] == "Name" && keyColumn < 0) input.key = text;
    input.fields.emplace_back(columns[i], std::move(text));
  }
  if (keyColumn >= 0 && static_cast<std::size_t>(keyColumn) < row.cells.size()) input.key = row.cells[keyColumn];
  if (input.key.empty()) {
    reason = keyColumn >= 0 ? "La clé (Code) est vide." : "Le nom, qui sert de clé, est vide.";
    return false;
  }
  if (input.key.size() > 200 || input.key.find('/') != std::string::npos || input.key.front() == '.' ||
      std::any_of(input.key.begin(), input.key.end(), [](char c) { return static_cast<unsigned char>(c) < 32; })) {
    reason = "Clé invalide : " + input.key.substr(0, 40) + ".";
    return false;
  }
  return true;
}

}  // namespace

bool LCsvImportMap(LPartyKind kind, const std::vector<std::string>& header, std::string_view map,
                   std::vector<std::string>& columns, std::vector<std::string>& notes, std::string* error) {
  std::vector<MapEntry> entries;
  columns.clear();
  notes.clear();
  return ParseMap(kind, map, entries, error) && MapColumns(kind, header, entries, columns, notes, error);
}

bool LCsvImportBytes(LProfile& profile, LPartyKind kind, std::string_view bytes, std::string_view map, bool dryRun,
                     LProcessInterface* process, LCsvImportReport& report, std::string* error) {
  report = LCsvImportReport();
  LCsvTable table;
  if (!LCsvTableParse(bytes, table, error)) return false;
  report.encoding = table.encoding;
  report.separator = table.separator;
  std::vector<std::string> columns;
  if (!LCsvImportMap(kind, table.header.cells, map, columns, report.mapping, error)) return false;
  int keyColumn = static_cast<int>(std::find(columns.begin(), columns.end(), kKeyColumn) - columns.begin());
  if (keyColumn == static_cast<int>(columns.size())) keyColumn = -1;

  // Every row is read and checked before the first is written.
  std::vector<RowInput> inputs;
  inputs.reserve(table.rows.size());
  std::vector<std::pair<int, std::string>> refused;  // line, reason
  for (const LCsvTableRow& row : table.rows) {
    RowInput input;
    std::string reason;
    if (ReadRow(kind, profile.GetCurrencyFormat(), row, columns, keyColumn, input, reason)) inputs.push_back(std::move(input));
    else refused.emplace_back(row.line, std::move(reason));
  }
  report.nRows = static_cast<int>(table.rows.size());

  const LFileStoreListBase& list = profile.MainList(LPartyKindOf(kind).list);
  // The list's index (customers' names) takes the import's lines together; a crash leaves rows
  // done and entries missing, which readers mend.
  LFileStoreIndexBatch indexLines(list);
  std::set<std::string> seen;  // keys met in a dry run: a second row would update the first
  std::size_t next = 0;        // next refused row to report, in line order
  for (std::size_t i = 0; i < inputs.size(); ++i) {
    const RowInput& input = inputs[i];
    for (; next < refused.size() && refused[next].first < input.line; ++next)
      (void)report.errors.AddRowResult(refused[next].first, kProcessFailed, refused[next].second);
    if (process != nullptr) {
      if (process->IsToStop()) {
        (void)report.errors.AddRowResult(input.line, kProcessCancelled, {});
        return true;
      }
      process->SetProgress(static_cast<double>(i) / static_cast<double>(inputs.size()));
    }
    bool created = false;
    std::string reason;
    if (dryRun) {
      created = seen.insert(input.key).second && !list.TestRecordExists(input.key);
    } else if (!LPartySave(profile, kind, input.key, input.fields, LPartySaveMode::kCreateOrUpdate, &created,
                           &reason)) {
      (void)report.errors.AddRowResult(input.line, kProcessFailed, reason);
      continue;
    }
    ++(created ? report.nCreated : report.nUpdated);
  }
  for (; next < refused.size(); ++next)
    (void)report.errors.AddRowResult(refused[next].first, kProcessFailed, refused[next].second);
  if (process != nullptr) process->SetProgress(1);
  return true;
}

bool LCsvImport(LProfile& profile, LPartyKind kind, const std::string& path, std::string_view map, bool dryRun,
                LProcessInterface* process, LCsvImportReport& report, std::string* error) {
  report = LCsvImportReport();
  std::string bytes;
  if (!LCsvTableReadBytes(path, bytes, error)) return false;
  return LCsvImportBytes(profile, kind, bytes, map, dryRun, process, report, error);
}

std::string LCsvExport(LProfile& profile, LPartyKind kind) {
  const LPartyKindInfo& info = LPartyKindOf(kind);
  std::span<const LPartyField> fields = LPartyFields(kind);
  std::vector<std::string> cells = {std::string(info.keyName)};
  for (const LPartyField& field : fields) cells.emplace_back(field.name);
  std::string out;
  LCsvTableAppendRow(out, cells);
  std::vector<std::string> keys;
  LRecord record;
  const LFileStoreListBase& list = profile.MainList(info.list);
  for (LFileStoreIteratorBase it(list, record); record.IsAttached(); it.Next(record))
    keys.push_back(record.GetPrimaryKey());
  std::sort(keys.begin(), keys.end());
  int currencyDigits = profile.GetCurrencyDigits();
  for (const std::string& key : keys) {
    LRecord one;
    if (!list.Open(one, key)) continue;
    cells = {key};
    for (const LPartyField& field : fields)
      cells.push_back(LPartyFieldText(field, one.GetString(field.name), currencyDigits));
    one.DetachWithoutSave();
    LCsvTableAppendRow(out, cells);
  }
  return out;
}
