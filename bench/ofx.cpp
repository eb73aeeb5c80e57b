// Statement and expression throughput: statement lines read per second from a generated bank
// statement of 100,000 lines (written once, in a temporary folder, when the first benchmark
// starts), and template report expressions evaluated per second, by the solver alone and through
// the form manager's substitution.
#include <benchmark/benchmark.h>
#include <unistd.h>

#include <cstdint>
#include <cstdlib>
#include <memory>
#include <string>

#include "accounts/ofx.h"
#include "invoice/shared/templatereportformdata.h"
#include "bench/benchfolder.h"
#include "invoice/shared/profile.h"
#include "llib/gen/file.h"

namespace {

constexpr int kStatementLines = 100000;

// A temporary application folder holding the business and the statement, removed at the end.
class BenchHome {
 public:
  BenchHome() {
    if (home_.Path().empty()) return;
    profile_ = std::make_unique<LProfile>();
    statement_ = home_.Path() + "/statement.ofx";
    WriteStatement(statement_);
  }
  bool Ready() const { return profile_ != nullptr; }
  LProfile& Profile() const { return *profile_; }
  const std::string& Statement() const { return statement_; }

 private:
  // A bank statement as banks write them: CR LF, one leaf a line, a name and a memo a line.
  static void WriteStatement(const std::string& path) {
    std::string text =
        "OFXHEADER:100\r\nDATA:OFXSGML\r\nVERSION:102\r\nSECURITY:NONE\r\nENCODING:USASCII\r\nCHARSET:1252\r\n"
        "COMPRESSION:NONE\r\nOLDFILEUID:NONE\r\nNEWFILEUID:NONE\r\n\r\n<OFX>\r\n<BANKMSGSRSV1>\r\n<STMTTRNRS>\r\n"
        "<TRNUID>1\r\n<STMTRS>\r\n<CURDEF>EUR\r\n<BANKACCTFROM>\r\n<BANKID>30004\r\n<ACCTID>00012345678\r\n"
        "<ACCTTYPE>CHECKING\r\n</BANKACCTFROM>\r\n<BANKTRANLIST>\r\n<DTSTART>20240101\r\n<DTEND>20241231\r\n";
    for (int i = 0; i < kStatementLines; ++i) {
      std::string number = std::to_string(i);
      text += "<STMTTRN>\r\n<TRNTYPE>DEBIT\r\n<DTPOSTED>20240" + std::to_string(1 + i % 9) + "15120000.000[-5:EST]\r\n";
      text += "<TRNAMT>-" + std::to_string(i % 1000) + "." + std::to_string(10 + i % 90) + "\r\n";
      text += "<FITID>2024" + number + "\r\n<NAME>CARTE " + number + " SUPERMARCHE &amp; CIE\r\n";
      text += "<MEMO>PAIEMENT PAR CARTE " + number + "\r\n</STMTTRN>\r\n";
    }
    text += "</BANKTRANLIST>\r\n<LEDGERBAL>\r\n<BALAMT>1234.56\r\n<DTASOF>20241231\r\n</LEDGERBAL>\r\n"
            "</STMTRS>\r\n</STMTTRNRS>\r\n</BANKMSGSRSV1>\r\n</OFX>\r\n";
    if (!LFile::WriteAllAtomic(path, text)) std::abort();
  }

  LBenchHome home_{"ofx"};
  std::string statement_;
  std::unique_ptr<LProfile> profile_;
};

const BenchHome& Home() {
  static BenchHome home;
  return home;
}

void BM_StatementLinesRead(benchmark::State& state) {
  const BenchHome& home = Home();
  if (!home.Ready()) {
    state.SkipWithError("no temporary folder");
    return;
  }
  std::size_t lines = 0;
  for (auto _ : state) {
    LBankStatement statement;
    std::string error;
    if (!LOFXImportTransaction(home.Profile(), nullptr, home.Statement(), statement, error)) {
      state.SkipWithError(error.c_str());
      return;
    }
    lines += statement.CountLines();
  }
  state.SetItemsProcessed(static_cast<std::int64_t>(lines));
  state.counters["lines/s"] = benchmark::Counter(static_cast<double>(lines), benchmark::Counter::kIsRate);
}
// Several readings, so that the first, on a cold heap and page cache, does not make the figure.
BENCHMARK(BM_StatementLinesRead)->Unit(benchmark::kMillisecond)->MinTime(3);

void BM_ExpressionsSolved(benchmark::State& state) {
  for (auto _ : state) {
    SimpleExpressionSolver solver("(1000.5+250.25)*12-(99.99/3)*2+7", ".");
    benchmark::DoNotOptimize(solver.GetResult());
  }
  state.SetItemsProcessed(state.iterations());
  state.counters["expressions/s"] =
      benchmark::Counter(static_cast<double>(state.iterations()), benchmark::Counter::kIsRate);
}
BENCHMARK(BM_ExpressionsSolved);

void BM_FieldExpressionsEvaluated(benchmark::State& state) {
  KVTemplateReportFormManager form(2, ".");
  form.SetFieldValue("Loyer", 100050);
  form.SetFieldValue("Charges", 25025);
  form.SetFieldValue("Remise", 9999);
  std::string error;
  for (auto _ : state) benchmark::DoNotOptimize(form.EvaluateSimpleExpression("(Loyer+Charges)*12-Remise/3*2+7", error));
  state.SetItemsProcessed(state.iterations());
  state.counters["expressions/s"] =
      benchmark::Counter(static_cast<double>(state.iterations()), benchmark::Counter::kIsRate);
}
BENCHMARK(BM_FieldExpressionsEvaluated);

}  // namespace
