#pragma once

#include <QColor>
#include <QDialog>
#include <QString>

class QCheckBox;
class QComboBox;
class QPushButton;
class QSpinBox;

namespace qorvex {

class TqxQueryBuilder;

// The program's choices for the diagram, kept in QSettings: link style, grid and
// background.
struct TqxPreferences {
  // The background: the built-in dot pattern on white, light or dark grey, or a plain
  // colour.
  enum Background { bgWhite, bgLight, bgDark, bgPlain };

  QString linkStyle = QStringLiteral("Access Style");
  int gridSize = 2;
  bool snapToGrid = true;
  Background background = bgLight;
  QColor colour = QColor(255, 255, 255);

  static TqxPreferences Load();
  void Save() const;
  // Shows them on Builder (an unknown link style keeps the current one).
  void ApplyTo(TqxQueryBuilder* Builder) const;
};

// Edits the preferences; Builder gives the registered link styles.
class TqxPreferencesDialog : public QDialog {
  Q_OBJECT
 public:
  TqxPreferencesDialog(const TqxQueryBuilder* Builder, const TqxPreferences& Values,
                       QWidget* Parent = nullptr);
  TqxPreferences Values() const;

  QComboBox* LinkStyle() const { return LinkStyle_; }
  QSpinBox* GridSize() const { return GridSize_; }
  QCheckBox* Snap() const { return Snap_; }
  QComboBox* Background() const { return Background_; }

 private:
  void ShowColour();

  QComboBox* LinkStyle_;
  QSpinBox* GridSize_;
  QCheckBox* Snap_;
  QComboBox* Background_;
  QPushButton* Colour_;
  QColor ColourValue_;
};

}  // namespace qorvex
