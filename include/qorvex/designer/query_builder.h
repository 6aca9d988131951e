#pragma once

#include <QColor>
#include <QFont>
#include <QImage>
#include <QJsonDocument>
#include <QPixmap>
#include <QString>
#include <QWidget>
#include <functional>
#include <memory>

#include "qorvex/model/query_builder.h"
#include "qorvex/widgets_export.h"

class QMimeData;
class QUndoStack;

namespace qorvex {

class TqxQueryBuilderLinkPainter;
class TqxQueryBuilderPrivate;

// The query builder widget an application places in a window: the statement's sub-queries
// as tabs, each union operand as a diagram of datasource boxes above the select-list pane.
// Assigning SQL lays the statement out (after the event loop delivers the load); every
// edit on screen goes through the model, which writes the SQL anew and emits sqlChanged.
class QORVEX_WIDGETS_EXPORT TqxQueryBuilder : public QWidget, public TqxBaseQueryBuilder {
  Q_OBJECT
  Q_PROPERTY(QString SQL READ sql WRITE setSql NOTIFY sqlChanged)
  Q_PROPERTY(bool SnapToGrid READ GetSnapToGrid WRITE SetSnapToGrid)
  Q_PROPERTY(int GridSize READ GetGridSize WRITE setGridSize)
  Q_PROPERTY(QColor TableColor READ tableColor WRITE setTableColor)
  Q_PROPERTY(QFont TableFont READ tableFont WRITE setTableFont)
  Q_PROPERTY(QPixmap BkImage READ bkImage WRITE setBkImage)
  Q_PROPERTY(qorvex::TqxBkImagePos BkImagePos READ GetBkImagePos WRITE SetBkImagePos)
  Q_PROPERTY(
      qorvex::TqxBkImageDarkness BkImageDarkness READ GetBkImageDarkness WRITE SetBkImageDarkness)
  Q_PROPERTY(QColor BkColor READ bkColor WRITE setBkColor)
  Q_PROPERTY(int SplitterHeight READ GetSplitterHeight WRITE setSplitterHeight)
  Q_PROPERTY(int DefColumnsPaneHeight READ GetDefColumnsPaneHeight WRITE SetDefColumnsPaneHeight)
  Q_PROPERTY(
      qorvex::TqxUnionNavBarPosition UnionNavBarPos READ GetUnionNavBarPos WRITE SetUnionNavBarPos)
  Q_PROPERTY(QString LinkTypeName READ linkTypeName WRITE setLinkTypeName)

 public:
  explicit TqxQueryBuilder(QWidget* Parent = nullptr);
  ~TqxQueryBuilder() override;

  // Qt-typed faces of the builder's properties.
  QString sql() const;
  void setSql(const QString& Text);
  void setGridSize(int Value);
  void setSplitterHeight(int Value);
  QColor tableColor() const;
  void setTableColor(const QColor& Value);
  QFont tableFont() const;
  void setTableFont(const QFont& Value);
  QPixmap bkImage() const;
  void setBkImage(const QPixmap& Value);
  QColor bkColor() const;
  void setBkColor(const QColor& Value);
  // The setters that code generated from a Qt Designer form calls: "set" and the name of
  // the property.
  void setSQL(const QString& Text) { setSql(Text); }
  void setSnapToGrid(bool Value) { SetSnapToGrid(Value); }
  void setDefColumnsPaneHeight(int Value) { SetDefColumnsPaneHeight(Value); }

  // A colour of the model (RGB or a system colour) as this widget's palette shows it.
  QColor ToQColor(TqxColor Color) const;

  // The painter that draws the links; null when the shared Access-style painter does.
  TqxQueryBuilderLinkPainter* GetLinkPainter() const;
  // Takes Painter (null for none) and frees the one it had.
  void SetLinkPainter(std::unique_ptr<TqxQueryBuilderLinkPainter> Painter);
  // The class name of the painter (empty without one). Assigning creates a painter of the
  // registered class of that name; an unknown name leaves the builder without one.
  std::string GetLinkTypeName() const override;
  void SetLinkTypeName(const std::string& Value) override;
  QString linkTypeName() const { return QString::fromStdString(GetLinkTypeName()); }
  void setLinkTypeName(const QString& Value) { SetLinkTypeName(Value.toStdString()); }
  // Switches to the painter whose style text is UserName ("Simple", "MS SQL Style",
  // "Access Style"); false, and no change, for a style that is not registered.
  bool CreateByUserName(const std::string& UserName);
  // The style texts of the registered painters, in registration order.
  void GetUserNames(const std::function<void(const std::string&)>& Callback) const;

  // The undo history, owned by the builder: one step per change the model reports, per
  // box moved or resized on screen and per SQL text assigned. Each step is named after
  // what it did ("Add Table", "Move", "Edit SQL", ...); undo and redo bring back the
  // statement and the place of every box. createUndoAction/createRedoAction give an
  // application its menu items.
  QUndoStack* UndoStack() const;
  // Assigns Sql as setSql does and, once it is laid out, places the boxes Layout names;
  // the history then starts afresh (opening a saved query).
  void OpenQuery(const QString& Sql, const QJsonDocument& Layout = QJsonDocument());

  // The position and size of every box, keyed by sub-query, operand and alias (or
  // object name), as a small JSON document to keep beside the SQL.
  QJsonDocument SaveLayout() const;
  // Places the boxes of Layout that the statement has; the others stay where they are.
  // Returns the number of boxes placed, or -1 with Error set for a document that is not
  // a layout. Applies to the statement as it stands (call after the load of new SQL).
  int LoadLayout(const QJsonDocument& Layout, QString* Error = nullptr);

  // The whole diagram of the operand being edited (every box and link, not only the part
  // scrolled into view), drawn at Scale (1 for screen pixels, 2 for twice as sharp).
  // A null image when there is no diagram.
  QImage RenderDiagram(qreal Scale = 1.0);
  // Writes RenderDiagram(Scale) to Path in the format its extension names (PNG, JPEG,
  // ...); false with Error set when it cannot.
  bool ExportImage(const QString& Path, qreal Scale = 1.0, QString* Error = nullptr);
  // Writes the diagram as an SVG drawing, texts kept as text.
  bool ExportSvg(const QString& Path, QString* Error = nullptr);

  // The model object of the focused box or link on the active operand's diagram; null
  // when neither has the focus.
  TqxQueryBuilderControlOwner* GetFocusedObject() const;

  // Drags from outside the component over a diagram (the application's own objects):
  // OnDragOver answers whether a drop at Point (diagram coordinates) is welcome;
  // OnDragDrop receives it.
  std::function<bool(TqxQueryBuilder* Sender, const QMimeData* Data, TqxUnionSubQuery* Operand,
                     QPoint Point)>
      OnDragOver;
  std::function<void(TqxQueryBuilder* Sender, const QMimeData* Data, TqxUnionSubQuery* Operand,
                     QPoint Point)>
      OnDragDrop;

 signals:
  // The model wrote its SQL anew (after an edit or after a load that changed it).
  void sqlChanged(const QString& Sql);
  // Assigned SQL was refused; the diagram stays as it was.
  void sqlError(const QString& Sql, const QString& Errors);
  // A load message was handled (whether or not the statement changed).
  void sqlLoaded();
  // The metadata provider could not give the columns of a datasource (Caption is the
  // datasource's display text); its box shows the "*" row only.
  void metadataError(const QString& Caption, const QString& Message);
  // An edit on screen failed in the model; without a receiver a message box shows it.
  void errorOccurred(const QString& Message);

 protected:
  bool event(QEvent* Event) override;
  void PostLoadSQLMessage() override;
  void DoLayoutChanged() override;
  void DoRepaintBackground() override;
  void DoAddObjectFormOptionsChanged() override;
  void DoMetadataError(TqxDatasource* ADatasource, const std::string& AMessage) override;

 private:
  friend class TqxQueryBuilderPrivate;
  std::unique_ptr<TqxQueryBuilderPrivate> d_;
};

}  // namespace qorvex
