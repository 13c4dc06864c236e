#include "desktop/transactions/find_row.h"

#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>

#include "desktop/controls/flow_row.h"
#include "desktop/controls/window_shortcuts.h"
#include "desktop/look/clear_button.h"
#include "desktop/look/qt_text.h"
#include "desktop/look/theme.h"

namespace corvane::desktop {
namespace {

constexpr int lettersOfWords = 26;

}  // namespace

FindRow::FindRow(std::shared_ptr<PortfolioTransactionsViewController> controller, QWidget* parent)
    : QWidget(parent),
      controller_(std::move(controller)),
      title_(new QLabel),
      hiddenEdits_(new QLabel),
      showHiddenEdits_(new QPushButton(QStringLiteral("Show"))),
      field_(new QLineEdit) {
  title_->setFont(theme::font(1, QFont::DemiBold));
  hiddenEdits_->setForegroundRole(QPalette::PlaceholderText);
  showHiddenEdits_->setAccessibleName(QStringLiteral("Show what was just entered"));
  showHiddenEdits_->setAutoDefault(false);
  field_->setPlaceholderText(QStringLiteral("Find transactions"));
  field_->setAccessibleName(QStringLiteral("Find transactions"));
  field_->setToolTip(QStringLiteral("Any words of a row: div ABC 2023, or 1234.56"));
  field_->setFixedWidth(theme::widthOfLetters(lettersOfWords));
  addClearButton(*field_);
  field_->installEventFilter(this);
  new WindowShortcuts(*field_);

  auto* row = new FlowRow(this);
  row->setContentsMargins(0, 0, 0, 0);
  row->setSpacing(spacing::narrow);
  row->addWidget(title_);
  row->addWidget(hiddenEdits_);
  row->addWidget(showHiddenEdits_);
  row->addStretch();
  row->addWidget(field_);
  connect(field_, &QLineEdit::textChanged, this,
          [this](const QString& text) { controller_->setFindText(utf8Text(text)); });
  connect(showHiddenEdits_, &QPushButton::clicked, this, [this] {
    controller_->setFindText("");
    leaveHandler();
  });
  refresh();
}

void FindRow::startFinding() {
  field_->setFocus(Qt::ShortcutFocusReason);
  field_->selectAll();
}

void FindRow::refresh() {
  title_->setText(qtText(controller_->title()));
  const QString hidden = qtText(controller_->hiddenEditsText());
  hiddenEdits_->setText(hidden);
  hiddenEdits_->setVisible(!hidden.isEmpty());
  showHiddenEdits_->setVisible(!hidden.isEmpty());
  field_->setEnabled(controller_->canFind() || controller_->isFinding());
  if (const QString text = qtText(controller_->findText()); text != field_->text()) {
    field_->setText(text);
  }
}

bool FindRow::eventFilter(QObject* watched, QEvent* event) {
  if (event->type() != QEvent::KeyPress && event->type() != QEvent::ShortcutOverride) {
    return QWidget::eventFilter(watched, event);
  }
  const auto& key = *static_cast<QKeyEvent*>(event);
  const bool isEscape = key.key() == Qt::Key_Escape;
  const bool leaves = isEscape || key.key() == Qt::Key_Return || key.key() == Qt::Key_Enter ||
                      key.key() == Qt::Key_Down;
  if (!leaves || key.modifiers().testAnyFlags(Qt::ControlModifier | Qt::AltModifier)) {
    return QWidget::eventFilter(watched, event);
  }
  event->accept();  // by the field, whatever else the window does with the key
  if (event->type() == QEvent::KeyPress) {
    if (isEscape) {
      controller_->setFindText("");
    }
    leaveHandler();
  }
  return true;
}

}  // namespace corvane::desktop
