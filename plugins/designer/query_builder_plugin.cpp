// The Qt Designer plugin of the query builder widget.
#include "query_builder_plugin.h"

#include <QIcon>
#include <QPixmap>

#include "qorvex/designer/query_builder.h"
#include "qorvex/metadata/event_provider.h"
#include "qorvex/syntax/components.h"
#include "query_builder.xpm"

namespace qorvex {

namespace {

// A builder made in a form lays out the SQL typed into its property: the SQL-92 dialect
// and a metadata provider that knows no tables (boxes show the "*" row). A child object
// holds them, so they live exactly as long as the widget.
class TqxFormProviders : public QObject {
 public:
  explicit TqxFormProviders(QObject* Parent) : QObject(Parent) {}
  TqxSQL92SyntaxProvider Syntax;
  TqxEventMetadataProvider Metadata;
};

}  // namespace

TqxQueryBuilderDesignerPlugin::TqxQueryBuilderDesignerPlugin(QObject* Parent) : QObject(Parent) {}

// The class name as generated code spells it.
QString TqxQueryBuilderDesignerPlugin::name() const {
  return QStringLiteral("qorvex::TqxQueryBuilder");
}

QString TqxQueryBuilderDesignerPlugin::group() const {
  return QStringLiteral("Qorvex");
}

QString TqxQueryBuilderDesignerPlugin::toolTip() const {
  return QStringLiteral("Visual SQL query builder");
}

QString TqxQueryBuilderDesignerPlugin::whatsThis() const {
  return QStringLiteral(
      "Shows one SELECT statement as a diagram of tables and joins with a grid of output "
      "columns; every edit rewrites the SQL (the SQL property and the sqlChanged signal).");
}

QString TqxQueryBuilderDesignerPlugin::includeFile() const {
  return QStringLiteral("qorvex/designer/query_builder.h");
}

QIcon TqxQueryBuilderDesignerPlugin::icon() const {
  return QIcon(QPixmap(query_builder_icon));
}

bool TqxQueryBuilderDesignerPlugin::isContainer() const {
  return false;
}

QString TqxQueryBuilderDesignerPlugin::domXml() const {
  return QStringLiteral(
      "<ui language=\"c++\">\n"
      " <widget class=\"qorvex::TqxQueryBuilder\" name=\"queryBuilder\">\n"
      "  <property name=\"geometry\">\n"
      "   <rect><x>0</x><y>0</y><width>640</width><height>420</height></rect>\n"
      "  </property>\n"
      " </widget>\n"
      " <customwidgets>\n"
      "  <customwidget>\n"
      "   <class>qorvex::TqxQueryBuilder</class>\n"
      "   <extends>QWidget</extends>\n"
      "   <header>qorvex/designer/query_builder.h</header>\n"
      "   <propertyspecifications>\n"
      "    <stringpropertyspecification name=\"SQL\" type=\"multiline\"/>\n"
      "   </propertyspecifications>\n"
      "  </customwidget>\n"
      " </customwidgets>\n"
      "</ui>\n");
}

bool TqxQueryBuilderDesignerPlugin::isInitialized() const {
  return Initialized_;
}

void TqxQueryBuilderDesignerPlugin::initialize(QDesignerFormEditorInterface*) {
  Initialized_ = true;
}

QWidget* TqxQueryBuilderDesignerPlugin::createWidget(QWidget* Parent) {
  auto* builder = new TqxQueryBuilder(Parent);
  auto* providers = new TqxFormProviders(builder);
  builder->SetSyntaxProvider(&providers->Syntax);
  builder->SetMetadataProvider(&providers->Metadata);
  return builder;
}

}  // namespace qorvex
