#include "RedAlertAction.h"

#include <CodePage.h>
#include <Console.h>
#include <Utils.h>

#include <algorithm>
#include <string>
#include <string_view>

#include "CommandLauncher.h"

namespace quarda {
namespace {

constexpr std::string_view kPlayer = "RedAlert.exe";
constexpr std::string_view kSoundExtensions[] = {".wav", ".mp3", ".asf", ".wma"};

bool IsSoundFile(std::string_view action) {
  const std::string extension = ExtractFileExt(action);
  return std::ranges::any_of(kSoundExtensions, [&](std::string_view sound) {
    return platform::SameAnsiText(sound, extension);
  });
}

}  // namespace

void PerformRedAlertAction(IQuardaInstance& scan) {
  const AnsiString action = scan.GetConfig()->GetRedAlertAction();
  if (action.IsEmpty()) {
    platform::Beep();
  } else if (IsSoundFile(action)) {
    const std::string player = Concat({scan.GetQuardaPath(), "\\", kPlayer});
    StartApplication(scan, nullptr, Concat({"\"", player, "\" \"", action, "\" $nowait$"}));
  } else {
    StartApplication(scan, nullptr, action);
  }
}

}  // namespace quarda
