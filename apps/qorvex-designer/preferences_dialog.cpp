#include "preferences_dialog.h"

#include <QCheckBox>
#include <QColorDialog>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QPixmap>
#include <QPushButton>
#include <QSettings>
#include <QSpinBox>
#include <QVBoxLayout>

#include "qorvex/designer/query_builder.h"

namespace qorvex {

TqxPreferences TqxPreferences::Load() {
  QSettings s;
  TqxPreferences p;
  p.linkStyle = s.value(QStringLiteral("diagram/linkStyle"), p.linkStyle).toString();
  p.gridSize = std::clamp(s.value(QStringLiteral("diagram/gridSize"), p.gridSize).toInt(), 1, 50);
  p.snapToGrid = s.value(QStringLiteral("diagram/snapToGrid"), p.snapToGrid).toBool();
  const int background = s.value(QStringLiteral("diagram/background"), int(p.background)).toInt();
  if (background >= bgWhite && background <= bgPlain)
    p.background = static_cast<Background>(background);
  const QColor colour(s.value(QStringLiteral("diagram/colour")).toString());
  if (colour.isValid())
    p.colour = colour;
  return p;
}

void TqxPreferences::Save() const {
  QSettings s;
  s.setValue(QStringLiteral("diagram/linkStyle"), linkStyle);
  s.setValue(QStringLiteral("diagram/gridSize"), gridSize);
  s.setValue(QStringLiteral("diagram/snapToGrid"), snapToGrid);
  s.setValue(QStringLiteral("diagram/background"), int(background));
  s.setValue(QStringLiteral("diagram/colour"), colour.name());
}

void TqxPreferences::ApplyTo(TqxQueryBuilder* Builder) const {
  Builder->CreateByUserName(linkStyle.toStdString());
  Builder->setGridSize(gridSize);
  Builder->SetSnapToGrid(snapToGrid);
  if (background == bgPlain) {
    // A transparent picture over the background colour leaves the colour alone.
    QPixmap clear(1, 1);
    clear.fill(Qt::transparent);
    Builder->setBkColor(colour);
    Builder->SetBkImagePos(bkipTile);
    Builder->setBkImage(clear);
  } else {
    Builder->setBkImage(QPixmap());
    Builder->SetBkImageDarkness(background == bgWhite   ? bgidWhite
                                : background == bgLight ? bgidLight
                                                        : bgidDark);
  }
  Builder->update();
}

TqxPreferencesDialog::TqxPreferencesDialog(const TqxQueryBuilder* Builder,
                                           const TqxPreferences& Values, QWidget* Parent)
    : QDialog(Parent), ColourValue_(Values.colour) {
  setWindowTitle(QStringLiteral("Preferences"));
  auto* layout = new QVBoxLayout(this);
  auto* form = new QFormLayout;
  LinkStyle_ = new QComboBox(this);
  Builder->GetUserNames(
      [this](const std::string& Name) { LinkStyle_->addItem(QString::fromStdString(Name)); });
  LinkStyle_->setCurrentIndex(std::max(0, LinkStyle_->findText(Values.linkStyle)));
  GridSize_ = new QSpinBox(this);
  GridSize_->setRange(1, 50);
  GridSize_->setSuffix(QStringLiteral(" px"));
  GridSize_->setValue(Values.gridSize);
  Snap_ = new QCheckBox(QStringLiteral("&Snap boxes to the grid"), this);
  Snap_->setChecked(Values.snapToGrid);
  Background_ = new QComboBox(this);
  Background_->addItems({QStringLiteral("Dots on white"), QStringLiteral("Dots on light grey"),
                         QStringLiteral("Dots on dark grey"), QStringLiteral("Plain colour")});
  Background_->setCurrentIndex(int(Values.background));
  Colour_ = new QPushButton(this);
  Colour_->setAutoDefault(false);
  form->addRow(QStringLiteral("&Link style:"), LinkStyle_);
  form->addRow(QStringLiteral("&Grid size:"), GridSize_);
  form->addRow(QString(), Snap_);
  form->addRow(QStringLiteral("&Background:"), Background_);
  form->addRow(QStringLiteral("&Colour:"), Colour_);
  layout->addLayout(form);
  auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
  layout->addWidget(buttons);
  connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
  connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
  connect(Background_, &QComboBox::currentIndexChanged, this,
          [this](int Index) { Colour_->setEnabled(Index == TqxPreferences::bgPlain); });
  connect(Colour_, &QPushButton::clicked, this, [this] {
    const QColor chosen = QColorDialog::getColor(ColourValue_, this);
    if (chosen.isValid()) {
      ColourValue_ = chosen;
      ShowColour();
    }
  });
  Colour_->setEnabled(Values.background == TqxPreferences::bgPlain);
  ShowColour();
}

void TqxPreferencesDialog::ShowColour() {
  QPixmap swatch(24, 14);
  swatch.fill(ColourValue_);
  Colour_->setIcon(swatch);
  Colour_->setText(ColourValue_.name());
}

TqxPreferences TqxPreferencesDialog::Values() const {
  TqxPreferences p;
  p.linkStyle = LinkStyle_->currentText();
  p.gridSize = GridSize_->value();
  p.snapToGrid = Snap_->isChecked();
  p.background = static_cast<TqxPreferences::Background>(Background_->currentIndex());
  p.colour = ColourValue_;
  return p;
}

}  // namespace qorvex
