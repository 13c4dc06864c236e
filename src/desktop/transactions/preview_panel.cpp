#include "desktop/transactions/preview_panel.h"

#include <QLabel>
#include <QVBoxLayout>
#include <algorithm>

#include "desktop/look/attributed_text_view.h"
#include "desktop/look/qt_text.h"
#include "desktop/look/theme.h"

namespace corvane::desktop {
namespace {

constexpr int panelWidth = 230;

AttributedText wordsOf(const TransactionPreview& preview, const std::vector<std::string>& missing,
                       const std::string& notice, const std::string& hint) {
  AttributedText words;
  const auto add = [&words](const std::string& text, const TextStyle& style) {
    if (!text.empty()) {
      words.append((words.isEmpty() ? "" : "\n") + text, style);
    }
  };
  add(notice, {});
  if (!preview.refusal.empty()) {
    add("⚠ " + preview.refusal, {.colour = Colour::Name::systemRed});
    add(preview.reason, {});
  } else if (preview.figures.empty()) {
    for (const std::string& sentence : missing) {
      add(sentence, {.colour = Colour::Name::secondaryLabel});
    }
  } else {
    add(hint, {});
  }
  return words;
}

}  // namespace

PreviewPanel::PreviewPanel() : words_(new AttributedLabel) {
  setFrameShape(QFrame::StyledPanel);
  auto* title = new QLabel(QStringLiteral("What this entry does"));
  title->setFont(theme::font(1, QFont::DemiBold));
  setFixedWidth(
      std::max(panelWidth, title->sizeHint().width() + 2 * (spacing::medium + frameWidth())));
  words_->setWordWrap(true);
  words_->setAlignment(Qt::AlignLeft | Qt::AlignTop);
  auto* column = new QVBoxLayout(this);
  column->setContentsMargins(spacing::medium, spacing::medium, spacing::medium, spacing::medium);
  column->setSpacing(spacing::tight);
  column->addWidget(title);
  for (Row& row : rows_) {
    row = {new QLabel, new QLabel, new QLabel};
    row.label->setForegroundRole(QPalette::PlaceholderText);
    row.label->setContentsMargins(0, spacing::tight, 0, 0);
    for (QLabel* figure : {row.before, row.after}) {
      figure->setFont(theme::monospacedFont());
      figure->setAlignment(Qt::AlignRight);
      figure->setTextFormat(Qt::PlainText);
    }
    for (QLabel* label : {row.label, row.before, row.after}) {
      label->hide();
      column->addWidget(label);
    }
  }
  column->addWidget(words_);
  column->addStretch(1);
}

void PreviewPanel::show(const TransactionPreview& preview, const std::vector<std::string>& missing,
                        const std::string& notice, const std::string& hint) {
  const AttributedText words = wordsOf(preview, missing, notice, hint);
  if (preview == shown_ && words.plainText() == shownWords_) {
    return;
  }
  shown_ = preview;
  shownWords_ = words.plainText();
  for (std::size_t i = 0; i < rows_.size(); ++i) {
    const bool isShown = i < preview.figures.size();
    const Row& row = rows_[i];
    const auto figure = isShown ? preview.figures[i] : TransactionPreview::Figure();
    row.label->setText(qtText(figure.label));
    row.before->setText(qtText(figure.before));
    row.after->setText((figure.before.empty() ? QString() : QStringLiteral("→ ")) +
                       qtText(figure.after));
    row.label->setVisible(isShown);
    row.before->setVisible(isShown && !figure.before.empty());
    row.after->setVisible(isShown);
  }
  words_->setAttributedText(words);
  words_->setVisible(!words.isEmpty());
}

}  // namespace corvane::desktop
