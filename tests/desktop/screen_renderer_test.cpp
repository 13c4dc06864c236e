#include "desktop/app/screen_renderer.h"

#include <gmock/gmock.h>

#include <QImage>
#include <QImageReader>
#include <cstdlib>
#include <set>

#include "desktop/desktop_world.h"
#include "desktop/look/qt_text.h"

namespace corvane::testing {
namespace {

namespace fs = std::filesystem;

std::size_t coloursIn(const QImage& image) {
  std::set<QRgb> colours;
  for (int y = 0; y < image.height(); y += 7) {
    for (int x = 0; x < image.width(); x += 7) {
      colours.insert(image.pixel(x, y));
    }
  }
  return colours.size();
}

/// The size that the name of a picture tells; none where it tells none.
std::optional<QSize> sizeInName(const std::string& name) {
  for (const QSize size : desktop::ScreenRenderer::reportSizes) {
    if (name.find(std::to_string(size.width()) + "x" + std::to_string(size.height())) !=
        std::string::npos) {
      return size;
    }
  }
  return std::nullopt;
}

TEST(ScreenRenderer, WritesEveryScreenInBothAppearances) {
  DesktopWorld world;
  const auto window = world.newWindow();
  ASSERT_TRUE(world.show(*window, world.addPortfolio(*window, "Retirement & Home")));

  const char* kept = std::getenv("CORVANE_SCREENS");
  const fs::path folder = kept != nullptr ? fs::path(kept) : world.folder / "screens";
  std::vector<std::string> names;
  desktop::ScreenRenderer renderer(*window, folder);
  EXPECT_TRUE(renderer.renderAll([&](const fs::path& file) { names.push_back(file.filename()); }));

  for (const std::string screen :
       {"start", "portfolio-1-retirement-home-holdings", "portfolio-1-retirement-home-transactions",
        "portfolio-1-retirement-home-gains", "form-new-portfolio", "form-portfolio-details",
        "form-transaction-buy-1000x640", "form-transaction-journaled-shares-1440x900",
        "form-bulk-transactions-1000x640", "form-statement", "form-statement-imports"}) {
    const QImage light(desktop::qtPath(folder / (screen + "-light.png")));
    const QImage dark(desktop::qtPath(folder / (screen + "-dark.png")));
    const QSize size = sizeInName(screen).value_or(desktop::ScreenRenderer::pictureSize);
    EXPECT_EQ(light.size(), size) << screen;
    EXPECT_EQ(dark.size(), size) << screen;
    EXPECT_GT(coloursIn(light), 8U) << screen << " has nothing on it";
    EXPECT_GT(light.pixelColor(640, 20).lightness(), 128) << screen;
    EXPECT_LT(dark.pixelColor(640, 20).lightness(), 128) << screen;
    EXPECT_THAT(names, ::testing::Contains(screen + "-light.png"));
  }
}

TEST(ScreenRenderer, FitsSmallAndLargeWindows) {
  DesktopWorld world;
  const auto window = world.newWindow();
  ASSERT_TRUE(world.show(*window, world.addPortfolio(*window, "Retirement & Home")));
  EXPECT_LE(window->minimumSizeHint().width(), 1000);
  EXPECT_LE(window->minimumSizeHint().height(), 640);
  const char* kept = std::getenv("CORVANE_SCREENS");
  for (const QSize size : {QSize(1000, 640), QSize(3840, 2160)}) {
    const fs::path folder =
        (kept != nullptr ? fs::path(kept) : world.folder / "s") / std::to_string(size.width());
    desktop::ScreenRenderer renderer(*window, folder, size);
    std::vector<fs::path> files;
    EXPECT_TRUE(renderer.renderAll([&](const fs::path& file) { files.push_back(file); }));
    for (const fs::path& file : files) {
      // Windows beside the main one, and sheets on a panel, have a size of their own.
      const std::string name = file.stem().string();
      const bool isOther = name.starts_with("window-") || name.starts_with("sheet-");
      const QSize drawn = QImageReader(desktop::qtPath(file)).size();
      EXPECT_TRUE(drawn.isValid()) << name << " is no picture";
      EXPECT_TRUE(isOther || drawn == sizeInName(name).value_or(size)) << name;
    }
  }
}

}  // namespace
}  // namespace corvane::testing
