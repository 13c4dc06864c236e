#include "desktop/look/alert_box.h"

#include <QApplication>
#include <QMessageBox>
#include <QPushButton>

#include "desktop/look/qt_text.h"

namespace corvane::desktop {
namespace {

std::size_t position(const QMessageBox& box, const QAbstractButton* button) {
  const auto all = box.buttons();
  const QVariant given = button == nullptr ? QVariant() : button->property("position");
  // Closing an alert by Escape is the last button, which is the one that does nothing.
  return given.isValid() ? given.toUInt() : static_cast<std::size_t>(all.size() - 1);
}

bool isShownAlready(const QWidget* parent, const QString& message, const QString& informative) {
  if (parent == nullptr) {
    return false;
  }
  for (const QMessageBox* box : parent->findChildren<QMessageBox*>()) {
    if (box->isVisible() && box->text() == message && box->informativeText() == informative) {
      return true;
    }
  }
  return false;
}

}  // namespace

ErrorText errorText(const Error& error) {
  return {qtText(error.description().value_or("Something went wrong.")),
          qtText(error.furtherText())};
}

QMessageBox* makeAlert(QWidget* parent, AlertKind kind, const QString& message,
                       const QString& informative, const QStringList& buttons) {
  auto* box = new QMessageBox(parent);  // NOLINT(cppcoreguidelines-owning-memory): the parent owns
  box->setIcon(kind == AlertKind::message   ? QMessageBox::Information
               : kind == AlertKind::warning ? QMessageBox::Warning
                                            : QMessageBox::Critical);
  box->setTextFormat(Qt::PlainText);
  box->setText(message);
  box->setInformativeText(informative);
  box->setWindowModality(Qt::WindowModal);
  box->setWindowTitle(QStringLiteral("Corvane"));
  const bool isHarmful = kind == AlertKind::critical && buttons.size() > 1;
  for (qsizetype i = 0; i < buttons.size(); ++i) {
    const bool isFirst = i == 0;
    const bool isLast = i + 1 == buttons.size();
    const auto role = isFirst ? (isHarmful ? QMessageBox::DestructiveRole : QMessageBox::AcceptRole)
                      : isLast ? QMessageBox::RejectRole
                               : QMessageBox::ActionRole;
    QPushButton* button = box->addButton(buttons[i], role);
    button->setProperty("position", static_cast<uint>(i));
    if (isHarmful ? isLast : isFirst) {
      box->setDefaultButton(button);
    }
    if (isLast) {
      box->setEscapeButton(button);
    }
  }
  return box;
}

void showAlert(QWidget* parent, AlertKind kind, const QString& message, const QString& informative,
               const QStringList& buttons, std::function<void(std::size_t)> dismissed) {
  if (isShownAlready(parent, message, informative)) {
    if (dismissed) {
      dismissed(static_cast<std::size_t>(buttons.size() - 1));
    }
    return;
  }
  QMessageBox* box = makeAlert(parent, kind, message, informative, buttons);
  box->setAttribute(Qt::WA_DeleteOnClose);
  QObject::connect(box, &QMessageBox::finished, box, [box, dismissed = std::move(dismissed)] {
    if (dismissed) {
      dismissed(position(*box, box->clickedButton()));
    }
  });
  box->open();
}

void showError(QWidget* parent, const Error& error, std::function<void()> dismissed) {
  const ErrorText text = errorText(error);
  showAlert(parent, AlertKind::warning, text.message, text.suggestion, {QStringLiteral("OK")},
            [dismissed = std::move(dismissed)](std::size_t) {
              if (dismissed) {
                dismissed();
              }
            });
}

std::size_t ask(QWidget* parent, AlertKind kind, const QString& message, const QString& informative,
                const QStringList& buttons) {
  QMessageBox* box = makeAlert(parent, kind, message, informative, buttons);
  box->exec();
  const std::size_t answer = position(*box, box->clickedButton());
  box->deleteLater();
  return answer;
}

}  // namespace corvane::desktop
