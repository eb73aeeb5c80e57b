#include "app/cmd_documentpdf.h"

#include <nlohmann/json.hpp>
#include <ostream>

#include "app/cli.h"
#include "app/commands.h"
#include "invoice/sales/documentprint.h"
#include "invoice/shared/documentform.h"
#include "invoice/shared/profile.h"
#include "llib/gen/jsontext.h"

int LCmdDocumentPdf(LCliContext& context, LCliArgs& args, const LSalesDocumentKind& kind) {
  std::string out, profileName;
  args.TakeOption("--out", out);
  bool facturX = args.TakeFlag("--facturx");
  bool hasProfile = args.TakeOption("--profile", profileName);
  std::vector<std::string> words;
  std::string error;
  if (!args.Finish(words, error)) return context.Usage(error);
  if (words.size() != 2) return context.Usage();
  std::optional<LFacturXProfile> facturXProfile;
  if (facturX) {
    facturXProfile = LFacturXProfile::kEn16931;
    if (hasProfile && !LFacturXProfileFromName(profileName, *facturXProfile))
      return context.Usage("--profile : en16931 ou basic");
  } else if (hasProfile) {
    return context.Usage("--profile va avec --facturx");
  }
  LProfile* profile = context.Profile();
  if (profile == nullptr) return kExitFailed;
  const std::string& key = words[1];
  if (out.empty()) out = LSalesDocumentPdfName(kind, key);
  std::string warning;
  if (!LSalesDocumentWritePdf(*profile, kind, key, out, facturXProfile, &error, &warning)) return context.Fail(error);
  if (!warning.empty()) context.err << warning << "\n";
  if (context.json) context.out << LJsonDump(nlohmann::json({{"path", out}})) << "\n";
  else context.out << out << "\n";
  return kExitOk;
}
