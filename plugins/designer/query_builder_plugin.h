#pragma once

#include <QObject>
#include <QtUiPlugin/QDesignerCustomWidgetInterface>

namespace qorvex {

// Qt Designer's entry for the query builder widget: it appears in the widget box under
// "Qorvex", and a form gets a TqxQueryBuilder whose properties the property editor edits.
class TqxQueryBuilderDesignerPlugin : public QObject, public QDesignerCustomWidgetInterface {
  Q_OBJECT
  Q_PLUGIN_METADATA(IID "org.qt-project.Qt.QDesignerCustomWidgetInterface")
  Q_INTERFACES(QDesignerCustomWidgetInterface)

 public:
  explicit TqxQueryBuilderDesignerPlugin(QObject* Parent = nullptr);

  QString name() const override;
  QString group() const override;
  QString toolTip() const override;
  QString whatsThis() const override;
  QString includeFile() const override;
  QIcon icon() const override;
  bool isContainer() const override;
  QString domXml() const override;
  bool isInitialized() const override;
  void initialize(QDesignerFormEditorInterface* Core) override;
  QWidget* createWidget(QWidget* Parent) override;

 private:
  bool Initialized_ = false;
};

}  // namespace qorvex
