// Alerts on a window.
#pragma once

#include <QString>
#include <QStringList>
#include <functional>

#include "platform/error.h"

class QMessageBox;
class QWidget;

namespace corvane::desktop {

/// An error as it is shown: what happened, and what can be done about it.
struct ErrorText {
  QString message;
  QString suggestion;
};
[[nodiscard]] ErrorText errorText(const Error& error);

/// What an alert is about, which its icon and its default button show.
enum class AlertKind { message, warning, critical };

/// An alert with `buttons`, the first of which is the default; of a critical one it is the one that
/// does the harm and the last is the default. Not shown yet; the parent owns it.
[[nodiscard]] QMessageBox* makeAlert(QWidget* parent, AlertKind kind, const QString& message,
                                     const QString& informative, const QStringList& buttons);

/// Shows an alert on `parent` and returns; `dismissed` is told the button. An alert that says the
/// same as one that is still open on that window is not shown a second time; `dismissed` is called
/// at once then.
void showAlert(QWidget* parent, AlertKind kind, const QString& message, const QString& informative,
               const QStringList& buttons, std::function<void(std::size_t)> dismissed = {});

/// Shows an error with one button.
void showError(QWidget* parent, const Error& error, std::function<void()> dismissed = {});

/// Asks and waits: the position of the button.
[[nodiscard]] std::size_t ask(QWidget* parent, AlertKind kind, const QString& message,
                              const QString& informative, const QStringList& buttons);

}  // namespace corvane::desktop
