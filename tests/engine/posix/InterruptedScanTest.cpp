// Scans that are killed before each of their file calls, and scans whose file calls fail: whatever
// call it is, each file holds its old or its new content, and the next scan works and tidies up.
// The calls are those of POSIX, and the killed scan is a process made by fork.
#include <Encodings.h>
#include <FileFaults.h>
#include <TnefBuilder.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <map>
#include <set>
#include <sstream>
#include <vector>

#include "EngineFixture.h"

namespace quarda::test {
namespace {

namespace fs = std::filesystem;

/// The files below the folder of a test, by their relative paths.
using TTree = std::map<std::string, std::string>;

const char kMailFile[] = "mails/in_1.inp";
const char kLog[] = "base/Quarda.log";
const char kTraffic[] = "base/QDInMails.log";
const char kStatistics[] = "base/Temp/Statistic.txt";
const char kReport[] = "mails/z/In_00001.mai";

const char kHtml[] = "Content-Type: text/html\r\n\r\n<p>Text<script>evil()</script></p>\r\n";

std::string Attached(const std::string& fields, const std::string& content) {
  return "--b\r\n" + fields + "\r\nContent-Transfer-Encoding: base64\r\n\r\n" +
         TextEncode(content, meBase64) + "\r\n";
}

/// A mail with a file, a mail with a page, and a container.
std::string MailOfMails() {
  const std::string start =
      "From: a@home\r\nSubject: s\r\nContent-Type: multipart/mixed; boundary=b\r\n\r\n";
  const std::string file =
      Attached("Content-Disposition: attachment; filename=y.txt", "text of the file");
  const std::string page = "--b\r\n" + std::string(kHtml);
  return start +
         Attached("Content-Disposition: attachment; filename=m.eml",
                  start + page + file + "--b--\r\n") +
         Attached("Content-Type: application/ms-tnef; name=winmail.dat",
                  TnefContainer({{"a.doc", "x"}})) +
         "--b--\r\n";
}

struct TCase {
  const char* row;
  std::string settings;  ///< empty: there are none, as at the very first start
  std::string mail;
  std::string log;  ///< before the scan
  int32_t exitCode;
};
void PrintTo(const TCase& given, std::ostream* out) { *out << given.row; }

const std::string kSettings =
    "[Common]\r\nInformOnVirus=1\r\nAdminAddress=admin@home\r\n"
    "[Logging]\r\nLogMode=4\r\nLogInOut=1\r\n"
    "[text/html Checks]\r\nDisableScripts=1\r\n"
    "[Red Alert]\r\nVirusMailCount=3\r\nMinuteSpan=60\r\n";

const TCase kCases[] = {
    {"a changed mail", kSettings, "From: a@home\r\nSubject: s\r\n" + std::string(kHtml),
     "An old line.\r\n", 0},
    {"a virus", kSettings, "From: a@home\r\nTo: user@home\r\nSubject: s\r\n\r\nEVIL\r\n",
     "An old line.\r\n", 0},
    {"mails in a mail", kSettings, MailOfMails(), "An old line.\r\n", 0},
    {"the first start", "", "From: a@home\r\nSubject: s\r\n\r\nText\r\n", "", 0},
    {"a full log", "[Logging]\r\nLogMode=4\r\nLogMaxFileSize=1\r\n",
     "From: a@home\r\nSubject: s\r\n\r\nText\r\n", std::string(1100, 'x') + "\r\n", 0},
};

class InterruptedScanTest : public TEngineTest, public testing::WithParamInterface<TCase> {
 protected:
  InterruptedScanTest() : TEngineTest(FastFolder()) {
    Plugin("Judge").execute = [this](IQuardaInstance& scan) {
      judged_ = true;
      return Read(scan.GetArguments()->GetFilename().Str()).find("EVIL") == std::string::npos;
    };
    const TCase& given = GetParam();
    before_[kMailFile] = given.mail;
    before_["mails/z/admin@home"] = "";
    if (!given.settings.empty()) {
      before_["base/Quarda.ini"] = given.settings;
      before_["base/QDVirusMail.txt"] = "Bad.\r\n";
      before_[kTraffic] = "[2004-05-16 12:00]\t[x]\t[y]\t[1]\t[0]\t[z]\t\r\n";
      before_["base/Quarda.bak"] = "An older log.\r\n";
      before_["base/Temp/Quarda.ra"] = "38124.5\r\n";
      before_["base/Temp/Quarda.mai"] = "outmail\r\nC:\\out_9.inp\r\n";
      before_[kStatistics] = "2004-05-01\r\n\r\nMails=7\r\n";
    }
    if (!given.log.empty()) before_[kLog] = given.log;
    Restore();
    EXPECT_EQ(ScanMail(), given.exitCode);
    after_ = Take();
    EXPECT_EQ(after_.contains(kReport), given.mail.find("EVIL") != given.mail.npos);
    EXPECT_EQ(after_[kMailFile] != given.mail,
              after_[kMailFile].find("Text") == std::string::npos ||
                  given.mail.find("<script>") != given.mail.npos);
  }

  /// Where flushing costs nothing, if there is such a place.
  static fs::path FastFolder() {
    return fs::is_directory("/dev/shm") ? fs::path("/dev/shm") : fs::temp_directory_path();
  }

  int32_t ScanMail() {
    judged_ = false;
    return Scan(Path("mails\\in_1.inp"));
  }

  TTree Take() const {
    TTree tree;
    for (const auto& entry : fs::recursive_directory_iterator(Native())) {
      if (!entry.is_regular_file()) continue;
      tree[fs::relative(entry.path(), Native()).string()] =
          Read(platform::WindowsPath(entry.path().string()));
    }
    return tree;
  }
  void Restore() const {
    fs::remove_all(Native());
    fs::create_directories(Native() / "base");
    for (const auto& [name, content] : before_) {
      fs::create_directories((Native() / name).parent_path());
      Write(platform::WindowsPath((Native() / name).string()), content);
    }
  }
  /// The names of files that are there neither before a scan nor after it.
  std::set<std::string> Leftovers(const TTree& tree) const {
    std::set<std::string> names;
    for (const auto& [name, content] : tree) {
      if (!before_.contains(name) && !after_.contains(name)) names.insert(name);
    }
    return names;
  }

  /// Checks that no file lost its content.
  void ExpectOldOrNew(const TTree& tree) {
    for (const auto& [name, content] : before_) {
      if (tree.contains(name) || IsMovedAside(name)) continue;
      ADD_FAILURE() << name << " is gone";
    }
    for (const auto& [name, content] : tree) {
      if (Leftovers(tree).contains(name) || IsOldOrNew(name, content)) continue;
      ADD_FAILURE() << name << " holds:\n" << content;
    }
    if (tree.at(kMailFile) != before_[kMailFile] && after_.contains(kReport)) {
      EXPECT_TRUE(tree.contains(kReport)) << "the virus mail is nowhere";
    }
  }
  /// The mail-type file gives way to nested scans. A full log becomes the backup in place of the
  /// older one, or goes when it cannot.
  bool IsMovedAside(const std::string& name) const {
    if (name == "base/Temp/Quarda.mai") return true;
    return GetParam().log.size() > 1024 && (name == kLog || name == "base/Quarda.bak");
  }
  bool IsOldOrNew(const std::string& name, const std::string& content) const {
    const auto old = before_.find(name);
    const auto changed = after_.find(name);
    if (old != before_.end() && content == old->second) return true;
    if (changed == after_.end()) return false;
    if (name == kLog) return IsLog(content);
    if (name == "base/Temp/Quarda.mai") {
      return content.starts_with("inmail\r\nC:\\") && content.ends_with(".inp\r\n");
    }
    // What is counted and noted depends on how far a scan came.
    const std::string& before = old == before_.end() ? std::string() : old->second;
    if (name == kTraffic) return content.starts_with(before) && LineCount(content) == 2;
    if (name == kStatistics) return content.find(before.empty() ? "=1\r\n" : "=8\r\n") < 40;
    if (name == "base/Quarda.ini") return LinesOf(content) == LinesOf(changed->second);
    return content == changed->second;
  }
  static int LineCount(const std::string& content) {
    return content.ends_with("\r\n") ? static_cast<int>(std::ranges::count(content, '\n')) : -1;
  }
  /// The lines of new settings in any order: sections may change their places once more.
  static std::multiset<std::string> LinesOf(const std::string& content) {
    std::istringstream text(content);
    std::multiset<std::string> lines;
    for (std::string line; std::getline(text, line);) lines.insert(line);
    return lines;
  }
  /// Whole lines: behind those that were there, or in a new file when that was full.
  bool IsLog(const std::string& content) const {
    const bool isFull = GetParam().log.size() > 1024;
    return (isFull || content.starts_with(GetParam().log)) &&
           (content.empty() || content.ends_with("\r\n"));
  }

  /// Dates back what a scan days ago may have left.
  void LetDaysPass() const {
    const auto past = fs::file_time_type::clock::now() - std::chrono::days(365 * 25);
    for (const auto& [name, content] : Take()) fs::last_write_time(Native() / name, past);
  }
  /// Checks the scan of the same mail days later.
  void ExpectNextScanWorks() {
    LetDaysPass();
    EXPECT_EQ(ScanMail(), GetParam().exitCode);
    TTree tree = Take();
    EXPECT_EQ(tree[kMailFile], after_[kMailFile]);
    EXPECT_TRUE(judged_);
    for (const auto& [name, content] : after_) {
      EXPECT_TRUE(tree.contains(name) || IsMovedAside(name)) << name;
    }
    tree.erase("mails/z/In_00002.mai");  // the mail was reported, but not yet replaced
    for (const std::string& name : Leftovers(tree)) ADD_FAILURE() << name << " stays for ever";
  }

  TTree before_;
  TTree after_;
  bool judged_ = false;  ///< whether the last scan in this process came to the checks
};

TEST_P(InterruptedScanTest, Killed) {
  int calls = 0;
  for (bool died = true; died; ++calls) {
    SCOPED_TRACE("killed before call " + std::to_string(calls + 1));
    Restore();
    died = DiesAtFileCall(calls + 1, [this] { ScanMail(); });
    ExpectOldOrNew(Take());
    ExpectNextScanWorks();
  }
  EXPECT_GT(calls, 20);
}

struct TFault {
  const char* row;
  int error;
  std::set<std::string_view> calls;
};
const TFault kFaults[] = {
    {"full disk", ENOSPC, {"write", "fallocate", "mkdir", "open for writing", "fsync"}},
    {"no permission", EACCES, {"open for writing", "mkdir", "rename", "renameat2", "utimensat"}},
};

TEST_P(InterruptedScanTest, Fails) {
  const std::string& mail = GetParam().mail;
  const bool isVirus = after_.contains(kReport);
  const bool isNested = mail.find("m.eml") != mail.npos;
  for (const TFault& fault : kFaults) {
    for (const bool forEver : {false, true}) {
      int calls = 0;
      for (int first = 1; first == 1 || calls >= first - 1; ++first) {
        SCOPED_TRACE(std::string(fault.row) + (forEver ? " from call " : " at call ") +
                     std::to_string(first));
        Restore();
        int32_t exitCode = 0;
        {
          calls = 0;
          const TFileFaults faults([&](std::string_view call) {
            if (!fault.calls.contains(call)) return 0;
            ++calls;
            return calls == first || (forEver && calls > first) ? fault.error : 0;
          });
          exitCode = ScanMail();
        }
        TTree tree = Take();
        ExpectOldOrNew(tree);
        EXPECT_EQ(Leftovers(tree), std::set<std::string>());
        const bool isLost = tree[kMailFile] != after_[kMailFile];
        EXPECT_EQ(exitCode, isLost && isVirus && judged_ ? 1 : 0);
        if (isLost && judged_ && !isNested && !forEver) {
          EXPECT_NE(tree[kLog].find("Exception class E"), std::string::npos) << tree[kLog];
        }
        ExpectNextScanWorks();
      }
      EXPECT_GT(calls, 4);
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Of, InterruptedScanTest, testing::ValuesIn(kCases), [](const auto& given) {
  std::string name = given.param.row;
  std::erase(name, ' ');
  return name;
});

}  // namespace
}  // namespace quarda::test
