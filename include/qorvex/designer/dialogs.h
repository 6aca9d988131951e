#pragma once

#include <QDialog>
#include <QPointer>
#include <QString>
#include <QStringList>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "qorvex/model/types.h"
#include "qorvex/widgets_export.h"

class QCheckBox;
class QComboBox;
class QLabel;
class QLineEdit;
class QListView;
class QModelIndex;
class QPushButton;
class QSortFilterProxyModel;
class QTabWidget;
class QWidget;

namespace qorvex {

class TastSyntaxProvider;
class TSQLExpressionItem;
class TqxDatasource;
class TqxLink;
class TqxQueryBuilder;
class TqxQueryBuilderControlOwner;
class TqxUnionSubQuery;
class TqxObjectListModel;

// Sizes of the dialogs are designed in pixels at 96 dpi with an 8-point font whose lines
// are 13 pixels high; DialogScale is the factor for the font a widget really uses (which
// follows the screen's dpi and the system font).
QORVEX_WIDGETS_EXPORT double DialogScale(const QWidget* Widget);
QORVEX_WIDGETS_EXPORT int DialogScaled(const QWidget* Widget, int Pixels);

// Whether Name can be written bare in SQL: letters, digits and underscores, not starting
// with a digit, and not a word the dialect reserves.
QORVEX_WIDGETS_EXPORT bool IsPlainSQLName(const std::string& Name,
                                          const TastSyntaxProvider* Syntax);
// Name between the dialect's quotes, a closing quote inside it doubled.
QORVEX_WIDGETS_EXPORT std::string QuoteSQLName(const std::string& Name,
                                               const TastSyntaxProvider* Syntax);

// Base of the modal dialogs that edit one model object: loads the object, runs modally,
// asks CheckCanClose before an OK close (an exception there is shown and keeps the
// dialog open) and saves on OK.
class QORVEX_WIDGETS_EXPORT TqxQBPropertiesForm : public QDialog {
  Q_OBJECT
 public:
  explicit TqxQBPropertiesForm(QWidget* Parent = nullptr);

  // Loads Owner, runs the dialog and saves when it is accepted; true then.
  bool Edit(TqxQueryBuilderControlOwner* Owner, TastSyntaxProvider* SyntaxProvider);

  TqxQueryBuilderControlOwner* GetOwner() const { return Owner_; }
  TastSyntaxProvider* GetSyntaxProvider() const { return SyntaxProvider_; }
  // The message of the last refused OK (empty when none was refused).
  QString GetLastError() const { return LastError_; }

  virtual void LoadProps(TqxQueryBuilderControlOwner* Owner) = 0;
  virtual void SaveProps(TqxQueryBuilderControlOwner* Owner) = 0;
  // Validation before an OK close; raises to refuse. The base accepts.
  virtual void CheckCanClose() {}

  void done(int Result) override;

 protected:
  // Shows a refused OK's message in a message box.
  virtual void ShowError(const QString& Message);

 private:
  TqxQueryBuilderControlOwner* Owner_ = nullptr;
  TastSyntaxProvider* SyntaxProvider_ = nullptr;
  QString LastError_;
};

// Creates the properties dialog registered under a class name (as a syntax provider's
// GetEditPropsFormClass gives it); null for an unknown name.
using TqxPropertiesFormFactory = std::function<TqxQBPropertiesForm*(QWidget* Parent)>;
QORVEX_WIDGETS_EXPORT void RegisterPropertiesFormClass(const std::string& ClassName,
                                                       TqxPropertiesFormFactory Factory);
QORVEX_WIDGETS_EXPORT TqxQBPropertiesForm* CreatePropertiesForm(const std::string& ClassName,
                                                                QWidget* Parent);

// "Datasource Properties": the datasource's source text (read only) and its alias.
class QORVEX_WIDGETS_EXPORT TqxDatasourcePropsForm : public TqxQBPropertiesForm {
  Q_OBJECT
 public:
  explicit TqxDatasourcePropsForm(QWidget* Parent = nullptr);

  void LoadProps(TqxQueryBuilderControlOwner* Owner) override;
  void SaveProps(TqxQueryBuilderControlOwner* Owner) override;
  // A changed alias must be one name of the dialect (plain or quoted).
  void CheckCanClose() override;

  QLineEdit* eObj = nullptr;
  QLineEdit* eAlias = nullptr;
  QWidget* pDatasource = nullptr;
  QWidget* pButtons = nullptr;

 private:
  TqxDatasource* Datasource_ = nullptr;
};

// "Link Properties": the two datasources, the join kind as two "select all" boxes, and
// the condition: two columns and an operator for a plain column comparison, else the
// condition's text.
class QORVEX_WIDGETS_EXPORT TqxLinkPropsForm : public TqxQBPropertiesForm {
  Q_OBJECT
 public:
  explicit TqxLinkPropsForm(QWidget* Parent = nullptr);
  ~TqxLinkPropsForm() override;

  void LoadProps(TqxQueryBuilderControlOwner* Owner) override;
  void SaveProps(TqxQueryBuilderControlOwner* Owner) override;
  // With the expression panel: parses the condition; the parser's error refuses.
  void CheckCanClose() override;
  // Splits the width between the two object panes and keeps the operator centred.
  void FormResize();
  bool IsSimple() const { return Simple_; }

  QWidget* pObjects = nullptr;
  QWidget* pLeftObj = nullptr;
  QWidget* pRightObj = nullptr;
  QLineEdit* eLeftObj = nullptr;
  QLineEdit* eRightObj = nullptr;
  QCheckBox* cbAllFromLeft = nullptr;
  QCheckBox* cbAllFromRight = nullptr;
  QWidget* pSimple = nullptr;
  QWidget* pLeftCol = nullptr;
  QWidget* pOperator = nullptr;
  QWidget* pRightCol = nullptr;
  QLineEdit* eLeftCol = nullptr;
  QComboBox* cbOperator = nullptr;
  QLineEdit* eRightCol = nullptr;
  QWidget* pExpression = nullptr;
  QLineEdit* eExpression = nullptr;
  QWidget* pButtons = nullptr;

 protected:
  void resizeEvent(QResizeEvent* Event) override;

 private:
  TqxLink* Link_ = nullptr;
  bool Simple_ = false;
  std::unique_ptr<TSQLExpressionItem> NewExpression_;
};

// The query properties dialog of the SQL-92 dialect: DISTINCT and, for an operand after
// the first of a union, its set operator.
class QORVEX_WIDGETS_EXPORT TqxSQL92QueryPropsForm : public TqxQBPropertiesForm {
  Q_OBJECT
 public:
  explicit TqxSQL92QueryPropsForm(QWidget* Parent = nullptr);

  void LoadProps(TqxQueryBuilderControlOwner* Owner) override;
  void SaveProps(TqxQueryBuilderControlOwner* Owner) override;

  QCheckBox* cbDistinct = nullptr;
  QLabel* lUnionOperator = nullptr;
  QComboBox* cbUnionOperator = nullptr;

 private:
  TqxUnionSubQuery* Operand_ = nullptr;
};

// "Add new object": the tables and views of the metadata in two pages, narrowed by a
// filter; the chosen objects go into the builder's current union operand, and the
// dialog stays open for more until it is closed.
class QORVEX_WIDGETS_EXPORT TqxAddObjectForm : public QDialog {
  Q_OBJECT
 public:
  explicit TqxAddObjectForm(TqxQueryBuilder* Builder, QWidget* Parent = nullptr);
  ~TqxAddObjectForm() override;

  TqxQueryBuilder* GetBuilder() const { return Builder_; }
  // Reads the object lists from the metadata provider (views only when the dialect has
  // them).
  void FillLists();
  // Applies the builder's options to the dialog and both lists.
  void LoadOptions();
  // The builder's options changed.
  void NotifyOptionsChanged() { LoadOptions(); }
  // Runs modally after filling the lists.
  int ShowModal();
  // How many objects were added since the dialog was created.
  int GetAddedCount() const { return AddedCount_; }
  // Adds the selected objects of the active page (or its focused one) in one change.
  void bAddClick();
  // Writes the dialog's size back into the builder's options.
  void FormResize();
  // Narrows both lists to the names containing Text (letter case ignored).
  void SetFilter(const QString& Text);
  // The name an object is added by: quoted with the dialect's quotes unless it is a
  // plain identifier.
  static std::string ObjectNameForSQL(const std::string& Name, const TastSyntaxProvider* Syntax);

  QLabel* Label1 = nullptr;
  QLineEdit* eFilter = nullptr;
  QTabWidget* pcObjects = nullptr;
  QWidget* tsTables = nullptr;
  QWidget* tsViews = nullptr;
  QListView* lTables = nullptr;
  QListView* lViews = nullptr;
  QCheckBox* cbAddFK = nullptr;
  QPushButton* bAdd = nullptr;
  QPushButton* bClose = nullptr;

 protected:
  void resizeEvent(QResizeEvent* Event) override;

 private:
  void AddNames(const std::vector<std::string>& Names, bool Tables);
  void ApplyListStyle(QListView* List);
  void AddIndex(const QModelIndex& Index);

  TqxQueryBuilder* Builder_;
  TqxObjectListModel* TablesModel_;
  TqxObjectListModel* ViewsModel_;
  QSortFilterProxyModel* TablesFilter_;
  QSortFilterProxyModel* ViewsFilter_;
  bool LoadingOptions_ = false;
  bool WritingSize_ = false;
  int AddedCount_ = 0;
};

}  // namespace qorvex
