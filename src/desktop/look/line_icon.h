// Icons that are drawn, so that they have the ink of the text in both appearances.
#pragma once

#include <QIcon>

namespace corvane::desktop {

enum class LineIcon {
  back,
  forward,
  up,
  newFolder,
  list,
  details,
  folder,
  file,
  computer,
  home,
  information,
  warning,
  critical,
  question,
};

/// `which` in the colours of the appearance that is applied now.
[[nodiscard]] QIcon lineIcon(LineIcon which);

}  // namespace corvane::desktop
