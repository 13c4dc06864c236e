#include "desktop/exchange/statement_dialog.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QFileDialog>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QPointer>
#include <QPushButton>
#include <QScopeGuard>
#include <QScrollArea>
#include <QSortFilterProxyModel>
#include <QTableView>
#include <QVBoxLayout>
#include <QWheelEvent>
#include <algorithm>
#include <map>

#include "desktop/controls/table_view.h"
#include "desktop/exchange/work_progress.h"
#include "desktop/look/alert_box.h"
#include "desktop/look/documents_folder.h"
#include "desktop/look/qt_text.h"
#include "desktop/look/theme.h"
#include "exchange/brokers/import_export_error.h"
#include "presentation/portfolio/statement_preview_controller.h"

namespace corvane::desktop {

/// The rows with a tick in their first column.
class StatementRowsModel : public TableModelAdapter {
 public:
  StatementRowsModel(StatementPreviewController& preview, QObject* parent)
      : TableModelAdapter(preview, parent), preview_(preview) {}

  [[nodiscard]] QVariant data(const QModelIndex& index, int role) const override {
    const auto row = static_cast<std::size_t>(index.row());
    if (role == Qt::CheckStateRole && index.column() == 0 && row < preview_.numberOfRows()) {
      return preview_.mayBeTicked(row)
                 ? QVariant(preview_.isTicked(row) ? Qt::Checked : Qt::Unchecked)
                 : QVariant();
    }
    if (role == Qt::ToolTipRole) {
      return TableModelAdapter::data(index, Qt::DisplayRole);
    }
    return TableModelAdapter::data(index, role);
  }
  bool setData(const QModelIndex& index, const QVariant& value, int role) override {
    if (role != Qt::CheckStateRole || index.column() != 0) {
      return false;
    }
    preview_.setTicked(static_cast<std::size_t>(index.row()), value.toInt() == Qt::Checked);
    return true;
  }
  [[nodiscard]] Qt::ItemFlags flags(const QModelIndex& index) const override {
    const bool isTick = index.column() == 0 &&
                        static_cast<std::size_t>(index.row()) < preview_.numberOfRows() &&
                        preview_.mayBeTicked(static_cast<std::size_t>(index.row()));
    return TableModelAdapter::flags(index) | (isTick ? Qt::ItemIsUserCheckable : Qt::NoItemFlags);
  }

 private:
  StatementPreviewController& preview_;
};

/// The rows of one verdict.
class StatementRowsFilter : public QSortFilterProxyModel {
 public:
  using QSortFilterProxyModel::QSortFilterProxyModel;
};

namespace {

constexpr int verdictColumn = 1;

/// The field of an answer. Who turns the wheel over it scrolls the questions, and answers nothing.
class AnswerField : public QComboBox {
 protected:
  void wheelEvent(QWheelEvent* event) override { event->ignore(); }
};

QLabel* labelOf(const QString& text, QWidget* buddy) {
  auto* label = new QLabel(text);
  label->setBuddy(buddy);
  return label;
}

}  // namespace

StatementDialog::StatementDialog(std::unique_ptr<StatementPreviewController> preview,
                                 std::function<void(const std::vector<BasicTransaction>&)> imported,
                                 QWidget* parent)
    : QDialog(parent),
      preview_(std::move(preview)),
      imported_(std::move(imported)),
      summary_(new QLabel),
      questionsTitle_(new QLabel),
      questions_(new QFormLayout),
      questionArea_(new QScrollArea),
      answer_(new QPushButton(QStringLiteral("&Use Answers"))),
      filter_(new QComboBox),
      days_(new QComboBox),
      decimal_(new QComboBox),
      layout_(new QComboBox),
      account_(new QComboBox),
      accountLabel_(new QLabel(QStringLiteral("&Account:"))),
      marketRates_(new QCheckBox(QStringLiteral("Take missing exchange rates from the &market"))),
      ratesFile_(new QPushButton(QStringLiteral("Rates &File…"))),
      table_(new QTableView),
      rows_(new StatementRowsModel(*preview_, this)),
      filtered_(new StatementRowsFilter(this)),
      import_(new QPushButton) {
  setWindowTitle(QStringLiteral("Import Statement"));
  setWindowModality(Qt::WindowModal);
  setAttribute(Qt::WA_DeleteOnClose);
  layOut();
  preview_->changeHandler = [this] {
    // Not in the middle of a click on a tick, whose row is about to change.
    QMetaObject::invokeMethod(
        this, [this] { showState(); }, Qt::QueuedConnection);
  };
  showState();
}

StatementDialog::~StatementDialog() {
  preview_->changeHandler = nullptr;
}

void StatementDialog::fillFilter() {
  filter_->addItem(QStringLiteral("All lines"), QString());
  for (const RowVerdict verdict :
       {RowVerdict::isNew, RowVerdict::present, RowVerdict::perhapsPresent, RowVerdict::leftOut,
        RowVerdict::belongs, RowVerdict::asks, RowVerdict::refused, RowVerdict::ledgerRefuses}) {
    const QString name = qtText(displayName(verdict));
    filter_->addItem(name, name);
  }
  filtered_->setSourceModel(rows_);
  filtered_->setFilterKeyColumn(verdictColumn);
  connect(filter_, &QComboBox::currentIndexChanged, this, [this] {
    const QString verdict = filter_->currentData().toString();
    filtered_->setFilterRegularExpression(
        verdict.isEmpty() ? QString() : QStringLiteral("^") + verdict + QStringLiteral("$"));
  });
}

QHBoxLayout* StatementDialog::makeSources() {
  layout_->addItem(QStringLiteral("Worked out"), QString());
  for (const auto& [id, name] : preview_->layouts()) {
    layout_->addItem(qtText(name), qtText(id));
  }
  layout_->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
  constexpr int shownLetters = 24;
  layout_->setMinimumContentsLength(shownLetters);
  connect(layout_, &QComboBox::activated, this, [this] {
    const std::string id = utf8Text(layout_->currentData().toString());
    preview_->setLayout(id.empty() ? std::nullopt : std::optional(id));
  });
  accountLabel_->setBuddy(account_);
  connect(account_, &QComboBox::activated, this, [this] {
    const std::string name = utf8Text(account_->currentData().toString());
    preview_->setAccount(name.empty() ? std::nullopt : std::optional(name));
  });
  connect(marketRates_, &QCheckBox::clicked, this,
          [this](bool isOn) { preview_->setTakesMarketRates(isOn); });
  ratesFile_->setToolTip(
      QStringLiteral("A file whose columns are day, code of the currency, and rate"));
  connect(ratesFile_, &QPushButton::clicked, this, &StatementDialog::chooseRatesFile);
  auto* sources = new QHBoxLayout;
  sources->addWidget(labelOf(QStringLiteral("&Layout:"), layout_));
  sources->addWidget(layout_);
  sources->addWidget(accountLabel_);
  sources->addWidget(account_);
  sources->addStretch();
  sources->addWidget(marketRates_);
  sources->addWidget(ratesFile_);
  return sources;
}

void StatementDialog::chooseRatesFile() {
  const QString file =
      QFileDialog::getOpenFileName(this, QStringLiteral("Exchange Rates"), documentsFolder());
  if (file.isEmpty()) {
    return;
  }
  try {
    preview_->readRates(filePath(file));
  } catch (const Error& error) {
    showError(this, error);
  }
}

QHBoxLayout* StatementDialog::makeChoices() {
  fillFilter();
  for (const auto& [title, order] : {std::pair(QStringLiteral("Worked out"), -1),
                                     {QStringLiteral("Year, month, day"), 0},
                                     {QStringLiteral("Day, month, year"), 1},
                                     {QStringLiteral("Month, day, year"), 2}}) {
    days_->addItem(title, order);
  }
  connect(days_, &QComboBox::activated, this, [this] {
    const int order = days_->currentData().toInt();
    preview_->setDays(order < 0 ? std::nullopt : std::optional(static_cast<DayOrder>(order)));
  });
  for (const auto& [title, mark] : {std::pair(QStringLiteral("Worked out"), -1),
                                    {QStringLiteral("Point"), 0},
                                    {QStringLiteral("Comma"), 1}}) {
    decimal_->addItem(title, mark);
  }
  connect(decimal_, &QComboBox::activated, this, [this] {
    const int mark = decimal_->currentData().toInt();
    preview_->setDecimal(mark < 0 ? std::nullopt : std::optional(static_cast<DecimalMark>(mark)));
  });
  auto* choices = new QHBoxLayout;
  choices->addWidget(labelOf(QStringLiteral("&Show:"), filter_));
  choices->addWidget(filter_);
  choices->addStretch();
  choices->addWidget(labelOf(QStringLiteral("&Days:"), days_));
  choices->addWidget(days_);
  choices->addWidget(labelOf(QStringLiteral("De&cimals:"), decimal_));
  choices->addWidget(decimal_);
  return choices;
}

void StatementDialog::layOut() {
  summary_->setWordWrap(true);
  summary_->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
  auto* heading = new QLabel(windowTitle());
  heading->setFont(theme::font(1.3, QFont::DemiBold));
  questionsTitle_->setWordWrap(true);
  questions_->setContentsMargins(0, 0, 0, 0);
  auto* questionBox = new QWidget;
  questionBox->setLayout(questions_);
  questionArea_->setWidget(questionBox);
  questionArea_->setWidgetResizable(true);
  questionArea_->setFrameShape(QFrame::NoFrame);
  questionArea_->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
  questionArea_->setFocusPolicy(Qt::NoFocus);
  connect(answer_, &QPushButton::clicked, this, &StatementDialog::giveAnswers);

  auto* sources = makeSources();
  auto* choices = makeChoices();
  table_->setModel(filtered_);
  table_->setAccessibleName(QStringLiteral("Lines of the statement"));
  table_->setSelectionBehavior(QAbstractItemView::SelectRows);
  table_->setShowGrid(false);
  table_->verticalHeader()->hide();
  table_->horizontalHeader()->setStretchLastSection(true);
  table_->setTabKeyNavigation(false);
  table_->setWordWrap(false);

  auto* buttons = new QDialogButtonBox(QDialogButtonBox::Cancel);
  buttons->addButton(import_, QDialogButtonBox::AcceptRole);
  connect(import_, &QPushButton::clicked, this, &StatementDialog::importRows);
  connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);

  auto* column = new QVBoxLayout(this);
  column->setContentsMargins(spacing::section, spacing::wide, spacing::section, spacing::wide);
  column->setSpacing(spacing::narrow);
  column->addWidget(heading);
  column->addWidget(summary_);
  column->addWidget(questionsTitle_);
  column->addWidget(questionArea_);
  column->addWidget(answer_, 0, Qt::AlignLeft);
  column->addLayout(sources);
  column->addLayout(choices);
  column->addWidget(table_, 1);
  column->addWidget(buttons);
  constexpr int width = 960;
  constexpr int height = 600;
  resize(width, height);
}

void StatementDialog::showState() {
  summary_->setText(qtText(preview_->summary()));
  showQuestions();
  showAccounts();
  marketRates_->setVisible(preview_->needsRates());
  marketRates_->setChecked(preview_->takesMarketRates());
  ratesFile_->setVisible(preview_->needsRates());
  rows_->reload();
  table_->resizeColumnsToContents();
  import_->setText(qtText(preview_->importTitle()));
  import_->setEnabled(preview_->canImport());
}

void StatementDialog::showAccounts() {
  const std::vector<std::string> names = preview_->accounts();
  account_->clear();
  account_->addItem(QStringLiteral("All"), QString());
  for (const std::string& name : names) {
    account_->addItem(qtText(name), qtText(name));
  }
  const auto chosen = preview_->account();
  account_->setCurrentIndex(chosen ? std::max(account_->findData(qtText(*chosen)), 0) : 0);
  account_->setVisible(names.size() > 1);
  accountLabel_->setVisible(names.size() > 1);
}

void StatementDialog::showQuestions() {
  const auto& questions = preview_->questions();
  // What is typed stays while the market is searched for more choices.
  if (shownQuestions_ == questions) {
    return;
  }
  std::map<QString, QString> typed;
  QString focused;
  for (const QComboBox* field : answers_) {
    if (focusWidget() == field || field->isAncestorOf(focusWidget())) {
      focused = field->accessibleName();
    }
    if (field->isEditable()) {
      typed[field->accessibleName()] = field->currentText();
    }
  }
  shownQuestions_ = questions;
  while (questions_->rowCount() > 0) {
    questions_->removeRow(0);
  }
  answers_.clear();
  for (const auto& question : questions) {
    auto* field = new AnswerField;
    field->setEditable(question.takesOtherAnswers);
    field->setInsertPolicy(QComboBox::NoInsert);
    field->setAccessibleName(qtText(question.text));
    field->setAccessibleDescription(qtText(question.rows));
    if (!question.takesOtherAnswers) {
      field->addItem(QString(), QString());
    }
    for (const auto& [value, title] : question.choices) {
      field->addItem(qtText(title), qtText(value));
    }
    if (question.takesOtherAnswers) {
      const auto before = typed.find(qtText(question.text));
      field->setCurrentIndex(-1);
      field->setEditText(before != typed.end() && !before->second.isEmpty()
                             ? before->second
                             : qtText(question.answer));
      connect(field->lineEdit(), &QLineEdit::returnPressed, this, &StatementDialog::giveAnswers);
    }
    QString title =
        qtText(question.rows.empty() ? question.text : question.text + "\n" + question.rows);
    auto* label = labelOf(title.replace(QLatin1Char('&'), QLatin1String("&&")), field);
    label->setTextFormat(Qt::PlainText);
    questions_->addRow(label, field);
    label->show();  // now, since what is hidden has no height
    field->show();
    answers_.push_back(field);
    if (field->accessibleName() == focused) {
      field->setFocus();
    }
  }
  fitQuestions();
  if (!answers_.empty() && !isVisible()) {
    answers_.front()->setFocus();  // what has to be answered comes first
  }
}

void StatementDialog::fitQuestions() {
  const std::string title = preview_->questionsTitle();
  questionsTitle_->setText(qtText(title));
  questionsTitle_->setVisible(!title.empty());
  questionArea_->setVisible(!answers_.empty());
  answer_->setVisible(!answers_.empty());
  // The lines stay in sight, however many questions there are; a field that gets the keyboard comes
  // into view.
  constexpr int mostHeight = 160;
  questions_->activate();
  questionArea_->setFixedHeight(std::min(questionArea_->widget()->sizeHint().height(), mostHeight));
  // They come one after the other, and what uses them behind the last.
  QWidget* before = nullptr;
  for (QComboBox* field : answers_) {
    if (before != nullptr) {
      setTabOrder(before, field);
    }
    before = field;
  }
  if (before != nullptr) {
    setTabOrder(before, answer_);
    setTabOrder(answer_, layout_);
  }
}

void StatementDialog::giveAnswers() {
  std::vector<std::string> answers;
  for (const QComboBox* field : answers_) {
    // A choice stands for its value; anything else is taken as it was typed.
    const int index = field->findText(field->currentText());
    answers.push_back(
        utf8Text(index >= 0 ? field->itemData(index).toString() : field->currentText()));
  }
  preview_->answer(answers);
}

std::vector<BasicTransaction> StatementDialog::record() {
  // What is behind must not look at rows that the recording is changing.
  const auto setUpdates = [behind = QPointer(parentWidget())](bool areOn) {
    if (behind != nullptr) {
      behind->setUpdatesEnabled(areOn);
    }
  };
  setUpdates(false);
  const auto atEnd = qScopeGuard([&] { setUpdates(true); });
  WorkProgress progress(QStringLiteral("Recording the statement…"), this);
  return preview_->import([&](double fraction) { progress.show(fraction); });
}

void StatementDialog::importRows() {
  try {
    imported_(record());
  } catch (const UserCancelledError&) {
    return;  // all is as before, and the rows are still to be seen
  } catch (const Error& error) {
    showError(this, error);
    return;
  }
  accept();
}

}  // namespace corvane::desktop
