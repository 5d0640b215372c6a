// Makes the HTML of a mail harmless: objects, scripts and inline frames of one page.
#pragma once

#include <QDIntf.h>

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace quarda {

/// Told, in page order, what was found and what became of it.
using THtmlLog = std::function<void(int32_t priority, std::string_view message)>;

/// What a page must not keep.
struct THtmlRules {
  bool disableActiveX = false;
  bool disableScripts = false;
  /// Otherwise a script stays that writes objects, frames or scripts itself: a page of that kind is
  /// broken without it.
  bool alwaysRemoveScripts = false;
  /// Texts that no script may hold. They are looked for in the script's text in small letters.
  std::vector<std::string> blockedScripts;
};

/// The page with its ActiveX objects renamed and its scripts removed; nothing when it may stay as
/// it is.
std::optional<std::string> NeutraliseHtml(std::string_view html, const THtmlRules& rules,
                                          const THtmlLog& log);

struct TIFrameResult {
  bool isVirus = false;
  std::optional<std::string> html;  ///< the changed page, if anything changed
};

/// Deals with the inline frames of a page. The first one that the mode judges ends the walk.
TIFrameResult BlockIFrames(std::string_view html, TIFrameBlockMode mode, const THtmlLog& log);

}  // namespace quarda
