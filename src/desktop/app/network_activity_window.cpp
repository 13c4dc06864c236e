#include "desktop/app/network_activity_window.h"

#include <QComboBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QVBoxLayout>

#include "desktop/look/qt_text.h"
#include "desktop/look/theme.h"

namespace corvane::desktop {
namespace {

QPlainTextEdit* makeText(const QString& accessibleName) {
  auto* text = new QPlainTextEdit;
  text->setReadOnly(true);
  text->setTabChangesFocus(true);
  text->setAccessibleName(accessibleName);
  return text;
}

void showText(QPlainTextEdit& view, const TextView& text) {
  view.setFont(text.isMonospaced ? theme::monospacedFont() : theme::font(1));
  if (const QString now = qtText(text.text); view.toPlainText() != now) {
    view.setPlainText(now);
  }
}

}  // namespace

NetworkActivityWindow::NetworkActivityWindow(QWidget* parent)
    : QMainWindow(parent),
      entries_(new QComboBox),
      request_(makeText(QStringLiteral("Request"))),
      response_(makeText(QStringLiteral("Response"))) {
  setWindowTitle(QStringLiteral("Network Activity — Corvane"));
  resize(760, 560);
  entries_->setAccessibleName(QStringLiteral("Requests"));
  entries_->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
  request_->setMaximumHeight(96);
  auto* clear = new QPushButton(QStringLiteral("Clear"));

  auto* content = new QWidget;
  auto* column = new QVBoxLayout(content);
  auto* row = new QHBoxLayout;
  row->addWidget(entries_, 1);
  row->addWidget(clear);
  column->addLayout(row);
  column->addWidget(new QLabel(QStringLiteral("Request")));
  column->addWidget(request_);
  column->addWidget(new QLabel(QStringLiteral("Response")));
  column->addWidget(response_, 1);
  setCentralWidget(content);

  connect(clear, &QPushButton::clicked, this, [this] { controller_.clearActivity(); });
  connect(entries_, &QComboBox::activated, this,
          [this](int index) { controller_.selectEntry(static_cast<std::size_t>(index)); });
  controller_.didChange = [this] { update(); };
  controller_.viewDidLoad();
  update();
}

void NetworkActivityWindow::showEvent(QShowEvent* event) {
  controller_.viewWillAppear();
  QMainWindow::showEvent(event);
}

void NetworkActivityWindow::closeEvent(QCloseEvent* event) {
  controller_.viewDidDisappear();
  QMainWindow::closeEvent(event);
}

void NetworkActivityWindow::update() {
  const auto& menu = controller_.entryPopUpButton;
  entries_->clear();
  for (const std::string& title : menu.titles()) {
    entries_->addItem(qtText(title));
  }
  entries_->setCurrentIndex(menu.selectedIndex ? static_cast<int>(*menu.selectedIndex) : -1);
  entries_->setEnabled(menu.isEnabled);
  showText(*request_, controller_.requestTextView);
  showText(*response_, controller_.responseTextView);
}

}  // namespace corvane::desktop
