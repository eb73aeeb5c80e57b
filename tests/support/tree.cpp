#include "tree.h"

#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>

#include "llib/gen/file.h"
#include "tests/support/testhome.h"

namespace {

void Write(const std::string& path, const std::string& content) {
  std::filesystem::create_directories(std::filesystem::path(path).parent_path());
  std::ofstream(path, std::ios::binary | std::ios::trunc) << content;
}

}  // namespace

std::map<std::string, LTreeEntry> LTreeSnapshot(const std::string& root) {
  std::map<std::string, LTreeEntry> tree;
  std::error_code error;
  for (auto it = std::filesystem::recursive_directory_iterator(root, error);
       !error && it != std::filesystem::recursive_directory_iterator(); it.increment(error)) {
    std::string path = it->path().string();
    struct stat st;
    if (::lstat(path.c_str(), &st) != 0) continue;
    LTreeEntry entry;
    entry.mode = st.st_mode & 07777;
    if (S_ISDIR(st.st_mode)) {
      entry.kind = 'd';
    } else if (S_ISLNK(st.st_mode)) {
      entry.kind = 'l';
      entry.content = std::filesystem::read_symlink(path, error).string();
    } else if (S_ISREG(st.st_mode)) {
      entry.kind = 'f';
      entry.content = LReadFile(path);
      entry.mtimeNs = static_cast<long long>(st.st_mtim.tv_sec) * 1000000000LL + st.st_mtim.tv_nsec;
    }
    tree[path.substr(root.size() + 1)] = entry;
  }
  return tree;
}

std::string LTreeDifferences(const std::map<std::string, LTreeEntry>& actual,
                             const std::map<std::string, LTreeEntry>& expected) {
  std::string differences;
  for (const auto& [path, entry] : expected) {
    auto found = actual.find(path);
    if (found == actual.end()) differences += "missing: " + path + "\n";
    else if (found->second.kind != entry.kind) differences += "kind: " + path + "\n";
    else if (found->second.mode != entry.mode) differences += "mode: " + path + "\n";
    else if (found->second.content != entry.content) differences += "content: " + path + "\n";
    else if (found->second.mtimeNs != entry.mtimeNs) differences += "time: " + path + "\n";
  }
  for (const auto& [path, entry] : actual)
    if (expected.count(path) == 0) differences += "extra: " + path + "\n";
  return differences;
}

void LTreeWriteSampleBusiness(const std::string& folder) {
  Write(folder + "/Misc/Options.dat", "Init=1&CurrencySymbol=%E2%82%AC");
  Write(folder + "/Misc/Company.dat", "Name=Boulangerie%20Martin");
  for (int i = 1; i <= 5; ++i) Write(folder + "/Customers/" + std::to_string(i) + ".dat", "Name=Client" + std::to_string(i));
  Write(folder + "/Ledger/2024-01-31.csv", "2024-01-31,SLS10000,Recettes,4110,Vente,-1000,,,\r\n");
  Write(folder + "/Ledger/2024-02-01.csv", std::string(100000, 'x'));
  Write(folder + "/MultiBus/1/Misc/Options.dat", "Init=1");
  Write(folder + "/MultiBus/1/Misc/Company.dat", "Name=Atelier");
  std::filesystem::create_directories(folder + "/Empty");
  std::filesystem::create_symlink("Misc/Options.dat", folder + "/OptionsLink");
  ::chmod((folder + "/Customers/5.dat").c_str(), 0444);
}

LSmallFileSystem::LSmallFileSystem(long long sizeBytes, bool readOnly) {
  std::string pattern = LFile::GetTempFolder() + "/kontavo-fs-XXXXXX";
  if (::mkdtemp(pattern.data()) == nullptr) return;
  folder_ = pattern;
  std::string options = "size=" + std::to_string(sizeBytes) + ",mode=0777";
  unsigned long flags = readOnly ? MS_RDONLY : 0;
  if (::mount("tmpfs", folder_.c_str(), "tmpfs", flags, options.c_str()) == 0) path_ = folder_;
}

LSmallFileSystem::~LSmallFileSystem() {
  if (!path_.empty()) ::umount2(path_.c_str(), MNT_DETACH);
  if (!folder_.empty()) ::rmdir(folder_.c_str());
}

std::string LOtherFileSystemFolder() {
  struct stat temp, shm;
  if (::stat(LFile::GetTempFolder().c_str(), &temp) != 0 || ::stat("/dev/shm", &shm) != 0) return {};
  if (temp.st_dev == shm.st_dev || ::access("/dev/shm", W_OK) != 0) return {};
  return "/dev/shm";
}
