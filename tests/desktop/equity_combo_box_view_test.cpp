#include "desktop/controls/equity_combo_box_view.h"

#include <gmock/gmock.h>

#include <QDialog>
#include <QDialogButtonBox>
#include <QLineEdit>
#include <QListView>
#include <QPushButton>
#include <QTest>
#include <QVBoxLayout>

#include "desktop/app/main_queue_pump.h"
#include "desktop/desktop_world.h"
#include "desktop/invented_market.h"

namespace corvane::testing {
namespace {

using desktop::EquityComboBoxView;

/// A form with a box, another field and a default button.
class EquityComboBoxViewTest : public ::testing::Test {
 protected:
  EquityComboBoxViewTest() {
    box.setQuoteProvider(market);
    box.equityComboBoxDataSource->searchDelayInterval = std::chrono::milliseconds(5);
    auto* column = new QVBoxLayout(&form);
    view = new EquityComboBoxView(box, QStringLiteral("Equity"));
    column->addWidget(view);
    column->addWidget(other = new QLineEdit);
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok);
    column->addWidget(buttons);
    QObject::connect(buttons, &QDialogButtonBox::accepted, [this] { ++accepted; });
    form.show();
    form.activateWindow();
    EXPECT_TRUE(QTest::qWaitForWindowActive(&form));
    view->startEditing();
  }

  QWidget* popup() {
    for (QWidget* widget : QApplication::topLevelWidgets()) {
      if (widget->objectName() == QLatin1String("equityPopup") && widget->isVisible()) {
        return widget;
      }
    }
    return nullptr;
  }
  bool popupShows(const QString& text) {
    return DesktopWorld::waitUntil([&] {
      return popup() != nullptr &&
             popup()->findChild<QListView*>()->model()->index(0, 0).data().toString() == text;
    });
  }

  desktop::MainQueuePump pump;
  std::shared_ptr<InventedMarket> market = std::make_shared<InventedMarket>();
  EquityComboBox box;
  QDialog form;
  EquityComboBoxView* view = nullptr;
  QLineEdit* other = nullptr;
  int accepted = 0;
};

TEST_F(EquityComboBoxViewTest, SearchesAndChoosesByKeysAlone) {
  QTest::keyClicks(&view->field(), "NOR");
  ASSERT_TRUE(popupShows("NOR — NOR Incorporated"));
  EXPECT_TRUE(view->field().hasFocus()) << "the list leaves the keyboard where it is";
  EXPECT_EQ(view->field().accessibleDescription().toStdString(), "NOR — NOR Incorporated, 1 of 1");
  QTest::keyClick(&view->field(), Qt::Key_Return);
  ASSERT_NE(box.selectedEquity(), nullptr);
  EXPECT_EQ(view->field().text().toStdString(), "NOR — NOR Incorporated");
  EXPECT_EQ(popup(), nullptr);
  EXPECT_EQ(accepted, 0) << "the key that chose must not press the default button";
  QTest::keyClick(&view->field(), Qt::Key_Return);
  EXPECT_EQ(accepted, 1);

  QTest::keyClick(&view->field(), Qt::Key_Down);
  ASSERT_NE(popup(), nullptr);
  QTest::keyClick(&view->field(), Qt::Key_Escape);
  EXPECT_EQ(popup(), nullptr);
  EXPECT_TRUE(form.isVisible()) << "Escape closes the list before the form";
}

TEST_F(EquityComboBoxViewTest, ClosesWhereSomethingElseIsClicked) {
  view->field().setText("LUM");  // as an assistive technology does it
  ASSERT_TRUE(popupShows("LUM — LUM Incorporated"));
  QTest::mouseClick(&form, Qt::LeftButton, {}, QPoint(2, form.height() - 2));
  EXPECT_EQ(popup(), nullptr);

  view->field().setText("WHT");
  ASSERT_TRUE(popupShows("WHT — WHT Incorporated"));
  auto* list = popup()->findChild<QListView*>();
  QTest::mouseClick(list->viewport(), Qt::LeftButton, {},
                    list->visualRect(list->model()->index(0, 0)).center());
  ASSERT_NE(box.selectedEquity(), nullptr);
  EXPECT_EQ(box.selectedEquity()->symbol, "WHT");

  view->field().setText("OAK");
  other->setFocus();
  EXPECT_TRUE(DesktopWorld::waitUntil([&] {
    return box.selectedEquity() != nullptr && box.selectedEquity()->symbol == "OAK";
  })) << "a symbol is taken from somebody who goes on to the next field";
  EXPECT_EQ(popup(), nullptr);
}

}  // namespace
}  // namespace corvane::testing
