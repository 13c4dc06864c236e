// A sign that something is being fetched.
#pragma once

class QProgressBar;
class QString;

namespace corvane::desktop {

/// A small moving bar, hidden at first. Its place stays when it is hidden, so that nothing moves
/// when work begins or ends. The caller owns it.
[[nodiscard]] QProgressBar* makeBusyBar(const QString& accessibleName);

}  // namespace corvane::desktop
