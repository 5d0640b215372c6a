// Configured command lines: their macros and flags, and the programs they start. Paths reach these
// as paths of this system, pipes and signals say how they end: on Windows other tests tell the same
// of the platform layer.
#include <CommandLauncher.h>
#include <CommandMacros.h>
#include <PlatformError.h>
#include <Process.h>
#include <RedAlertAction.h>

#include <cerrno>
#include <chrono>

#include "TestScripts.h"

namespace quarda {
namespace {

using std::chrono::steady_clock;

class Command : public TScriptTest {
 protected:
  /// What a hook's script got as its arguments.
  std::string Shown(const std::string& arguments) {
    StartApplication(*scan_, nullptr, ShowScript() + " " + arguments);
    return Content("shown");
  }
};

TEST_F(Command, NamesTheScannedFile) {
  const std::string evil = "a\" -x \"$FILE$ $noexit$", here = platform::CurrentFolder() + "\\m.inp";
  const struct {
    const char* row;
    std::string file, command, written, pieces;  // the pieces between bars
  } kRows[] = {
      {"path", "C:\\in\\m.inp", "s /f $FILE$ $file$", "s /f C:\\in\\m.inp C:\\in\\m.inp",
       "s|/f|C:\\in\\m.inp|C:\\in\\m.inp"},
      {"name", "C:\\in\\m.inp", "s x$Name$y", "s xm.inpy", "s|xm.inpy"},
      {"short forms of a file that exists", "C:\\tmp", "s $FILE-SP$ $name-sp$", "s C:\\tmp tmp",
       "s|C:\\tmp|tmp"},
      {"blanks", "C:\\in\\mail 1.eml", "s $NAME$", "s mail 1.eml", "s|mail 1.eml"},
      {"blanks inside quotes", "C:\\mail 1.eml", "s \"$NAME$\" x", "s \"mail 1.eml\" x",
       "s|mail 1.eml|x"},
      {"blanks behind a backslash", "C:\\mail 1.eml", "s C:\\q\\$NAME$ x", "s C:\\q\\mail 1.eml x",
       "s|C:\\q\\mail 1.eml|x"},
      {"blanks behind an equals sign", "C:\\a b", "s --f=$FILE$ x", "s --f=C:\\a b x",
       "s|--f=C:\\a b|x"},
      {"no folder", "m.inp", "s $FILE$", "s " + here, "s|" + here},
      {"a value is not read again", "C:\\" + evil, "s $NAME$ x", "s " + evil + " x",
       "s|" + evil + "|x"},
      {"backslash at the end, inside quotes", "C:\\in\\", "s \"$FILE$\" x", "s \"C:\\in\\\" x",
       "s|C:\\in\\|x"},
      {"a quote at the end, inside quotes", "C:\\a\"", "s \"$NAME$\" x", "s \"a\"\" x", "s|a\"|x"},
      {"unknown macros take their dollar signs", "C:\\m", "s $x$FILE$ 5 $NAME$",
       "s $x$FILE$ 5 $NAME$", "s|$x$FILE$|5|$NAME$"},
      {"the program is no place for macros", "C:\\m", "\"C:\\my $NAME$\" $NAME$",
       "\"C:\\my $NAME$\" m", "C:\\my $NAME$|m"},
      {"quotes that are not needed go", "C:\\m", "\"s\"  \"a  b\" ", "s \"a  b\"", "s|a  b"},
      {"only blanks", "C:\\m", "   ", "", ""},
      {"only quotes", "C:\\m", "\"\"", "", ""},
      {"NUL", "C:\\m", std::string("s a\0$NAME$", 10), "s a", "s|a"},
  };
  const auto pieces = [](const std::string& command) {
    std::string joined;
    for (const std::string& piece : platform::SplitProgramLine(ExpandCommand(command).ForStart())) {
      joined += (joined.empty() ? "" : "|") + piece;
    }
    return joined;
  };
  for (const auto& row : kRows) {
    scan_->arguments->file = row.file;
    EXPECT_EQ(CmdMacrosToCmd(row.command), row.written) << row.row;
    EXPECT_EQ(pieces(row.command), row.pieces) << row.row;
  }
}

TEST_F(Command, NamesTheFileOfTheNewestScan) {
  const auto nested = MakeRef<TTestInstance>();
  nested->arguments->file = "C:\\nested";
  scan_->app->instances.push_back(nested.Get());
  EXPECT_EQ(CmdMacrosToCmd("s $FILE$"), "s C:\\nested");
  scan_->app->instances.clear();
  EXPECT_EQ(CmdMacrosToCmd("s $FILE$ $NAME-SP$"), "s $FILE$ $NAME-SP$");
}

TEST_F(Command, OfAHookKnowsTheMail) {
  const std::string head = "From: \"A, B\" <a@b.c>\nTo: one@x.y, two@x.y\nSubject: Hi there\n";
  const std::string parts = "Content-Type: multipart/mixed; boundary=b\n\n";
  const auto part = [](const std::string& name) {
    return "--b\nContent-Disposition: attachment; filename=\"" + name + "\"\n\nx\n";
  };
  const std::string three = head + parts + part("a.txt") + part("b c.doc") + part("d") + "--b--\n";
  const std::string hostile = "From: <a b;`id`\t$noexit$$FILE$@c>\nTo: <\"x y\"@z>\n" + parts +
                              part("a\\\\") + part("b\\\" \\\"c") + part("$hide$ d") + "--b--\n";
  const std::string file = Native("in_1.inp");
  const struct {
    const char* row;
    std::string mail, arguments, shown;
  } kRows[] = {
      {"every occurrence", three, "$sender$ $SENDER$ $Recipient$-$recipient$",
       "[a@b.c][a@b.c][one@x.y-one@x.y]"},
      {"count", three, "$attachmentcount$ $AttachmentCount$", "[3][3]"},
      {"names", three, "$attachmentfilenames$ $attachmentfilenames$",
       "[a.txt][b c.doc][d][$attachmentfilenames$]"},
      {"names behind an option", three, "--f=$AttachmentFileNames$,x", "[--f=a.txt][b c.doc][d,x]"},
      {"file", three, "$FILE$ $name$", "[" + file + "][in_1.inp]"},
      {"nobody", "Subject: x\n\n",
       "\"$recipient$\" $recipient$ $sender$ \"$attachmentfilenames$\" x", "[][][x]"},
      {"flags go", three, "$HIDE$a$chdir$ b$onlymail$ $hide$", "[a][b]"},
      {"hostile sender", hostile, "$sender$ x", "[a b;`id`\t$noexit$$FILE$@c][x]"},
      {"hostile recipient", hostile, "-r $recipient$ x", "[-r][x y@z][x]"},
      {"hostile names", hostile, "$attachmentfilenames$ x", "[a\\\\][b\\ \\c][$hide$ d][x]"},
      {"hostile names in quotes", hostile, "\"$attachmentfilenames$\" x",
       "[a\\\\][b\\ \\c][$hide$ d][x]"},
  };
  for (const auto& row : kRows) {
    scan_->mail = MailFromText(row.mail);
    EXPECT_EQ(Shown(row.arguments), row.shown) << row.row;
  }
  EXPECT_EQ(scan_->LogText(), "");
}

TEST_F(Command, OfAHookMayNameTheMailFile) {
  scan_->folder.Write("in 2.inp", "Subject: x\n\n");
  TMail mail;
  mail.LoadFromFile(scan_->folder.Path("in 2.inp"));
  scan_->mail = MailAdapter(mail);
  EXPECT_EQ(Shown("$mailfile$ $MailFile$"),
            "[" + Native("in 2.inp") + "][" + Native("in 2.inp") + "]");
  scan_->mail->SetSubject("changed");
  scan_->fileType = ftAttachment;
  std::filesystem::remove(Native("shown"));
  EXPECT_EQ(Shown("$OnlyMail$ $savemail$"), "") << "saved, but not run";
  EXPECT_EQ(Content("in 2.inp"), "Subject: changed\r\n\r\n");
  scan_->fileType = ftInMail;
  EXPECT_EQ(Shown("$onlyattachment$ a"), "");
  EXPECT_EQ(Shown("$onlymail$ a"), "[a]");
  scan_->mail = nullptr;
  EXPECT_EQ(StartApplication(*scan_, nullptr, ShowScript() + " b"), 0u);
  EXPECT_EQ(Content("shown"), "[a]");
}

TEST_F(Command, OfAHookReadsTheSubjectFromAFile) {
  const std::string temp = scan_->folder.Native().string() + "/";  // nobody else's
  const char* const before = std::getenv("TMPDIR");
  const std::string restored = before ? before : "/tmp";
  setenv("TMPDIR", temp.c_str(), 1);
  scan_->folder.Write("victim", "old");
  scan_->folder.Write("Quarda.sbj", "of a scan that was killed");
  scan_->folder.Write("Quarda1.sbj", "of a scan that runs");
  // Laid out by somebody who waits for us.
  std::filesystem::create_symlink(temp + "victim", temp + "Quarda2.sbj");
  std::filesystem::create_directory(temp + "Quarda3.sbj");
  scan_->mail = MailWithSubject("Hi \"there\"");
  const std::string script =
      Script("read.sh",
             "cd \"${0%/*}\"; { stat -c %a \"$1\"; cat \"$1\"; echo \"|$1|$2\"; } > shown; exit 4");
  const auto shown = [&] {
    EXPECT_EQ(StartApplication(*scan_, nullptr, script + " $SUBJECT$ $subject$"), 4u);
    return Content("shown");
  };
  EXPECT_EQ(shown(), "600\nHi \"there\"|" + temp + "Quarda4.sbj|$subject$\n");
  EXPECT_EQ(Content("victim") + Content("Quarda1.sbj"), "oldof a scan that runs");
  EXPECT_FALSE(std::filesystem::exists(temp + "Quarda4.sbj"));

  platform::SetFileStamp(scan_->folder.Path("Quarda.sbj"), 0x30A87081);
  EXPECT_EQ(shown(), "600\nHi \"there\"|" + temp + "Quarda.sbj|$subject$\n");
  EXPECT_FALSE(std::filesystem::exists(temp + "Quarda.sbj"));
  setenv("TMPDIR", restored.c_str(), 1);
}

TEST_F(Command, OfAHookWaitsOrNot) {
  Renew("[Common]\nMaxExecWaitTime=1\n");
  const std::string slow = Script("slow.sh", "sleep 5 & echo $! > \"${0%/*}/child\"; wait; exit 7");
  const auto start = steady_clock::now();
  EXPECT_EQ(StartApplication(*scan_, nullptr, slow + " $nowait$"), kNoExitCode);
  EXPECT_LT(steady_clock::now() - start, std::chrono::seconds(5)) << "the program takes that long";
  EXPECT_EQ(StartApplication(*scan_, nullptr, slow), platform::TProcess::kStillActive);
  EXPECT_EQ(std::system(("kill -0 $(cat " + Native("child") + ")").c_str()), 0) << "goes on";
  EXPECT_GE(steady_clock::now() - start, std::chrono::seconds(1));
  EXPECT_EQ(StartApplication(*scan_, nullptr, "sh -c \"exit 3\""), 3u);
}

TEST_F(Command, OfAHookStartsInItsFolder) {
  const std::string where = Script("where.sh", "pwd > \"${0%/*}/shown\"");
  for (const std::string& command : {where + " $chdir$", "$ChDir$ $hide$ " + where}) {
    StartApplication(*scan_, nullptr, command);
    EXPECT_EQ(Content("shown"), scan_->folder.Native().string() + "\n") << command;
  }
  StartApplication(*scan_, nullptr, where);
  EXPECT_EQ(Content("shown"), std::filesystem::current_path().string() + "\n");
}

TEST_F(Command, ThatCannotBeStartedIsLogged) {
  EXPECT_EQ(StartApplication(*scan_, nullptr, "C:\\no\\such $hide$"), kNoExitCode);
  EXPECT_EQ(StartApplication(*scan_, nullptr, " \"\" "), kNoExitCode);
  scan_->mail = MailFromText("From: <show.sh>\n\n");
  ShowScript();
  for (const std::string& command :
       {"$recipient$ touch " + Native("shown"), scan_->folder.Path("$sender$") + " a",
        '"' + scan_->folder.Path("x\\..\\$SENDER$") + "\" a"}) {
    EXPECT_EQ(StartApplication(*scan_, nullptr, command), kNoExitCode) << command;
    EXPECT_FALSE(std::filesystem::exists(Native("shown"))) << "no mail chooses the program";
  }
  LogLastError(*scan_, nullptr, 0);
  const std::string line = "Error||Execute error: " + platform::ErrorText(ENOENT) + "\n";
  EXPECT_EQ(scan_->LogText(), line + line + line + line + line);
}

TEST_F(Command, OfAScannerGivesItsExitCode) {
  const struct {
    const char *row, *body, *flag;
    uint32_t exitCode;
    bool crashed;
  } kRows[] = {
      {"exit code", "exit 5", "", 5, false},
      {"ignored", "exit 5", "x$NoExit$", 0, false},
      {"crash", "kill -11 $$", "", 11, true},
      {"crash, its code ignored", "kill -11 $$", "$noexit$", 0, true},
      {"closes its handles, ignores signals", "exec <&- >&- 2>&-; trap '' 1 2 15; exit 2", "", 2,
       false},
      {"writes much, leaves a child", "head -c 3000000 /dev/zero; sleep 2 & exit 1", "", 1, false}};
  for (const auto& row : kRows) {
    const std::string command =
        Script("p.sh", std::string("exec >/dev/null\n") + row.body) + row.flag;
    const TExecution result = ExecuteProcess(command, 20, false, {});
    EXPECT_TRUE(result.started) << row.row;
    EXPECT_EQ(result.exitCode, row.exitCode) << row.row;
    EXPECT_EQ(result.crashed, row.crashed) << row.row;
  }
  scan_->arguments->file = "C:\\$noexit$";
  EXPECT_EQ(ExecuteProcess("sh -c \"exit 9\" $FILE$", 0, false, {}).exitCode, 9u)
      << "a file name carries no flag";
}

TEST_F(Command, OfAScannerTellsWhyItDidNotStart) {
  const std::string plain = scan_->folder.Write("plain.sh", "exit 0");
  scan_->folder.Write("p.pif", "");
  EXPECT_TRUE(ExecuteProcess(Script("p.sh", ""), 0, false, {}).started);
  EXPECT_FALSE(std::filesystem::exists(Native("p.pif"))) << "a stale one goes";
  const struct {
    std::string command, folder;
    int error;
  } kRows[] = {{"C:\\no\\such", "", ENOENT},
               {"", "", ENOENT},
               {"  ", "", ENOENT},
               {"\"\"", "", ENOENT},
               {"\"", "", ENOENT},
               {"\"" + plain + "\"", "", EACCES},
               {"true", "C:\\no\\such", ENOENT},
               {"true " + std::string(1 << 20, '"'), "", E2BIG},
               {"true " + std::string(1 << 20, '$'), "", E2BIG}};
  for (const auto& row : kRows) {
    const TExecution result = ExecuteProcess(row.command, 0, false, row.folder);
    EXPECT_FALSE(result.started) << row.command.substr(0, 20);
    EXPECT_EQ(result.error, static_cast<uint32_t>(row.error)) << row.command.substr(0, 20);
    EXPECT_EQ(result.exitCode, 0u) << row.command.substr(0, 20);
  }
}

TEST_F(Command, AnswersARedAlert) {
  Script("RedAlert.exe", "printf '%s' \"$1\" > \"${0%/*}/shown\"");
  const std::string other = Script("alarm.sh", "printf other > \"${0%/*}/shown\"");
  const struct {
    std::string action, shown;
  } kRows[] = {{"", ""},  // beeps
               {"C:\\my sounds\\a.MP3", "/my sounds/a.MP3"},
               {"C:\\a.wma", "/a.wma"},
               {other, "other"}};
  for (const auto& row : kRows) {
    std::filesystem::remove(Native("shown"));
    scan_->config->SetRedAlertAction(row.action);
    PerformRedAlertAction(*scan_);
    for (int i = 0; i < 200 && Content("shown") != row.shown; ++i) std::system("sleep 0.01");
    EXPECT_EQ(Content("shown"), row.shown) << row.action;
  }
  EXPECT_EQ(scan_->LogText(), "");
}

}  // namespace
}  // namespace quarda
