// The panels that ask which workspace to open, and where to save one.
#pragma once

#include <QFileDialog>
#include <filesystem>
#include <optional>

namespace corvane::desktop {

/// Asks for an existing workspace. A workspace is a folder, so this is a panel of folders in which
/// a workspace is chosen rather than entered, and other folders are entered rather than chosen.
class OpenWorkspacePanel : public QFileDialog {
  Q_OBJECT

 public:
  OpenWorkspacePanel(QWidget* parent, const std::filesystem::path& startFolder);

  /// Runs the panel; none where the user thinks better of it.
  [[nodiscard]] std::optional<std::filesystem::path> ask();

  /// Takes the choice where it is a workspace, and enters it where it is another folder.
  void accept() override;

 private:
  void choose(const QString& path);
  QString chosen_;
};

/// Asks where to save a workspace. One that stands there already is chosen rather than entered, and
/// whether to replace it is not asked.
class SaveWorkspacePanel : public QFileDialog {
  Q_OBJECT

 public:
  SaveWorkspacePanel(QWidget* parent, const std::filesystem::path& startFolder,
                     const QString& name);

  /// Runs the panel; none where the user thinks better of it.
  [[nodiscard]] std::optional<std::filesystem::path> ask();

  void accept() override;
};

/// Asks where to save a workspace that is called `name`. Whether something stands there already is
/// not asked.
[[nodiscard]] std::optional<std::filesystem::path> askWhereToSaveWorkspace(
    QWidget* parent, const std::filesystem::path& startFolder, const QString& name);

}  // namespace corvane::desktop
