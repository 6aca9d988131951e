// The Qt Designer plugin loaded as Designer loads it: through QPluginLoader, the widget
// made by its interface and edited through the property system, as the property editor does.
#include <gtest/gtest.h>

#include <QApplication>
#include <QColor>
#include <QFileInfo>
#include <QMetaProperty>
#include <QPluginLoader>
#include <QWidget>
#include <QXmlStreamReader>
#include <QtUiPlugin/QDesignerCustomWidgetInterface>
#include <memory>

namespace {

QDesignerCustomWidgetInterface* LoadPlugin() {
  static QPluginLoader loader(QStringLiteral(QORVEX_DESIGNER_PLUGIN_FILE));
  QObject* instance = loader.instance();
  EXPECT_NE(instance, nullptr) << loader.errorString().toStdString();
  return qobject_cast<QDesignerCustomWidgetInterface*>(instance);
}

TEST(DesignerPlugin, DescribesTheWidgetForTheWidgetBoxAndGeneratedCode) {
  QDesignerCustomWidgetInterface* plugin = LoadPlugin();
  ASSERT_NE(plugin, nullptr);
  EXPECT_EQ(plugin->name(), "qorvex::TqxQueryBuilder");
  EXPECT_EQ(plugin->group(), "Qorvex");
  EXPECT_FALSE(plugin->isContainer());
  EXPECT_FALSE(plugin->icon().pixmap(32, 32).isNull());
  // Generated code includes this header from the installed include folder.
  EXPECT_TRUE(
      QFileInfo::exists(QStringLiteral(QORVEX_SOURCE_DIR "/include/") + plugin->includeFile()));

  // The form snippet names the same class and header.
  QXmlStreamReader xml(plugin->domXml());
  QString widgetClass, header;
  while (!xml.atEnd()) {
    if (xml.readNext() != QXmlStreamReader::StartElement)
      continue;
    if (xml.name() == QLatin1String("widget") && widgetClass.isEmpty())
      widgetClass = xml.attributes().value("class").toString();
    else if (xml.name() == QLatin1String("header"))
      header = xml.readElementText();
  }
  ASSERT_FALSE(xml.hasError()) << xml.errorString().toStdString();
  EXPECT_EQ(widgetClass, plugin->name());
  EXPECT_EQ(header, plugin->includeFile());
}

TEST(DesignerPlugin, MakesABuilderWhosePropertiesTheEditorSets) {
  QDesignerCustomWidgetInterface* plugin = LoadPlugin();
  ASSERT_NE(plugin, nullptr);
  plugin->initialize(nullptr);
  EXPECT_TRUE(plugin->isInitialized());

  QWidget form;
  std::unique_ptr<QWidget> widget(plugin->createWidget(&form));
  ASSERT_NE(widget, nullptr);
  EXPECT_EQ(widget->parentWidget(), &form);
  EXPECT_EQ(QString::fromLatin1(widget->metaObject()->className()), plugin->name());

  const struct {
    const char* name;
    QVariant value;
  } properties[] = {
      {"SnapToGrid", true},
      {"GridSize", 16},
      {"TableColor", QColor(Qt::yellow)},
      {"BkColor", QColor(Qt::darkCyan)},
      {"LinkTypeName", QStringLiteral("TqxQueryBuilderLinkPainterSimple")},
  };
  for (const auto& p : properties) {
    const int index = widget->metaObject()->indexOfProperty(p.name);
    ASSERT_GE(index, 0) << p.name;
    EXPECT_TRUE(widget->metaObject()->property(index).isDesignable()) << p.name;
    EXPECT_TRUE(widget->setProperty(p.name, p.value)) << p.name;
    EXPECT_EQ(widget->property(p.name), p.value) << p.name;
  }

  // SQL typed into the property editor is parsed (the widget has its providers) and laid
  // out; a failure would come as errorOccurred, shown here in the form's title.
  QObject::connect(widget.get(), SIGNAL(errorOccurred(QString)), &form,
                   SLOT(setWindowTitle(QString)));
  widget->setProperty("SQL", QStringLiteral("select a from t where b = 1"));
  QApplication::sendPostedEvents();
  EXPECT_EQ(form.windowTitle().toStdString(), "");
  EXPECT_EQ(widget->property("SQL").toString().simplified(),
            QStringLiteral("SELECT a FROM t WHERE b=1"));
}

}  // namespace

int main(int argc, char** argv) {
  if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
    qputenv("QT_QPA_PLATFORM", "offscreen");
  QApplication app(argc, argv);
  testing::InitGoogleTest(&argc, argv);
  return RUN_ALL_TESTS();
}
