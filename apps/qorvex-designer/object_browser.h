#pragma once

#include <QString>
#include <QWidget>

class QLineEdit;
class QTreeWidget;
class QTreeWidgetItem;

namespace qorvex {

class TqxBaseMetadataProvider;
class TastSyntaxProvider;

// The database's tables and views with their columns, beside the diagram. Objects are
// dragged onto a diagram (MIME type kObjectMimeType, the name as the SQL writes it) or
// double clicked to be added; a filter line narrows the list.
class TqxObjectBrowser : public QWidget {
  Q_OBJECT
 public:
  static constexpr const char* kObjectMimeType = "application/x-qorvex-object";

  explicit TqxObjectBrowser(QWidget* Parent = nullptr);

  // Reads the object lists again from Provider (null empties the browser). Syntax quotes
  // names that are not plain SQL names.
  void SetMetadata(TqxBaseMetadataProvider* Provider, const TastSyntaxProvider* Syntax);
  void Refresh();

  QLineEdit* Filter() const { return Filter_; }
  QTreeWidget* Tree() const { return Tree_; }
  // The item of an object by its name in the database, else null.
  QTreeWidgetItem* FindObject(const QString& Name) const;
  // The name as the SQL writes it (quoted where needed).
  QString SQLName(const QString& Name) const;

 signals:
  // An object was double clicked (or Return pressed on it).
  void addRequested(const QString& SQLName);
  // "Add Without Links" of the context menu.
  void addAloneRequested(const QString& SQLName);
  // The metadata provider failed; Message is its text.
  void metadataError(const QString& Message);

 private:
  void ApplyFilter(const QString& Text);
  void LoadColumns(QTreeWidgetItem* Object);
  void Activated(QTreeWidgetItem* Item);

  QLineEdit* Filter_;
  QTreeWidget* Tree_;
  QTreeWidgetItem* Tables_ = nullptr;
  QTreeWidgetItem* Views_ = nullptr;
  TqxBaseMetadataProvider* Provider_ = nullptr;
  const TastSyntaxProvider* Syntax_ = nullptr;
};

}  // namespace qorvex
