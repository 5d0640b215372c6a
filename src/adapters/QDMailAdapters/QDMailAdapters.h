// Mails as plug-ins see them: the door of this module.
#pragma once

#include <MailRead.h>
#include <QDIntf.h>

#include <memory>

namespace quarda {

/// A mail that outlives every reference to it and to its parts, headers and fields.
TRef<IMail> MailAdapter(TMail& mail);
/// A mail that lives as long as the reference returned and its copies.
TRef<IMail> MailAdapterOwned(std::unique_ptr<TMail> mail);

}  // namespace quarda
