// Fuzz target: the SGML loader and the OFX statement reader over arbitrary bytes. Statements
// come from any bank's server, so no input may crash the reader, recurse without bound, or break
// the promises the reconciliation relies on: texts of at most 259 bytes where the statement says
// so, one error text of at most 259 bytes, one statement line per STMTTRN element at most, and
// OFX dates that stay defined behaviour whatever their digits and time zones.
#include <fcntl.h>
#include <unistd.h>

#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <string>
#include <string_view>

#include "accounts/ofx.h"
#include "accounts/sgml.h"
#include "invoice/shared/profile.h"
#include "llib/gen/file.h"
#include "llib/gen/text.h"

namespace {

void Check(bool condition) {
  if (!condition) __builtin_trap();
}

// Walks the tree without recursion, checking its depth and the lookups on every element.
void WalkTree(const LSGMLElement& root) {
  struct Level {
    const LSGMLElement* element;
    int depth;
  };
  std::unique_ptr<Level[]> stack(new Level[kMaxSGMLDepth + 2]);
  int top = 0;
  stack[top++] = {&root, 0};
  while (top > 0) {
    Level level = stack[--top];
    Check(level.depth <= kMaxSGMLDepth + 1);
    std::string text;
    for (const LSGMLElement* child = level.element->GetFirstChild(); child != nullptr;
         child = child->GetNextSibling()) {
      Check(child->IsText() == child->GetName().empty());
      Check(child->GetName().size() <= kMaxTextBytes);
      if (child->IsText()) continue;
      level.element->GetString(child->GetName(), "default", text);
      Check(text.size() <= kMaxTextBytes);
      Check(level.element->GetElement(child->GetName()) != nullptr);
      (void)level.element->GetFloat(child->GetName(), 0);
      if (child->HasChildren()) {
        Check(top < kMaxSGMLDepth + 2);
        stack[top++] = {child, level.depth + 1};
      }
    }
  }
}

std::size_t Count(std::string_view text, std::string_view what) {
  std::size_t count = 0;
  for (std::size_t at = text.find(what); at != std::string_view::npos; at = text.find(what, at + 1)) ++count;
  return count;
}

// The business whose currency digits scale the amounts, in a private application folder that
// is removed when the fuzzing process exits.
LProfile& Business() {
  static const struct PrivateBusiness {
    std::string folder = [] {
      std::string name = LFile::GetTempFolder() + "/kontavo-fuzz-ofx-XXXXXX";
      Check(::mkdtemp(name.data()) != nullptr);
      ::setenv("KONTAVO_HOME", name.c_str(), 1);
      return name;
    }();
    std::unique_ptr<LProfile> profile = std::make_unique<LProfile>();
    ~PrivateBusiness() {
      std::error_code ignored;
      std::filesystem::remove_all(folder, ignored);
    }
  } business;
  return *business.profile;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  std::string_view bytes(reinterpret_cast<const char*>(data), size);

  std::string error;
  LSGMLLoader loader(bytes, error);
  LSGMLElement root;
  root.LoadData(loader);
  Check(error.size() <= kMaxTextBytes);
  Check(loader.GetDepth() == 0);
  WalkTree(root);

  (void)OFXDate2Time(bytes.substr(0, 40));

  // One scratch file per fuzzing process, removed when it exits.
  static const struct ScratchFile {
    std::string path = LFile::GetTempFolder() + "/kontavo-fuzz-ofx-" + std::to_string(::getpid()) + ".ofx";
    ~ScratchFile() { ::unlink(path.c_str()); }
  } scratch;
  ::unlink(scratch.path.c_str());
  LFileDescriptor file(LRobustOpen(scratch.path, O_WRONLY | O_CREAT | O_EXCL, 0600));
  if (!file.IsOpen() || !LRobustWrite(file.Get(), bytes.data(), bytes.size())) return 0;
  file.Close();

  LBankStatement statement;
  std::string readError;
  bool read = LOFXImportTransaction(Business(), nullptr, scratch.path, statement, readError);
  Check(read == readError.empty());
  Check(readError.size() <= kMaxTextBytes);
  Check(statement.accountId.size() <= kMaxTextBytes);
  Check(statement.CountLines() <= Count(bytes, "<STMTTRN"));
  for (const LBankStatementItem* line = statement.GetFirstLine(); line != nullptr; line = line->GetNext()) {
    Check(line->id.size() <= kMaxTextBytes);
    Check(line->amount >= INT32_MIN && line->amount <= INT32_MAX);
    Check(!line->marked);
  }
  return 0;
}
