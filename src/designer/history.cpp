// The builder's undo history, the layout document kept beside a query, and the export of
// a diagram as an image or an SVG drawing.
#include <QCoreApplication>
#include <QFile>
#include <QHash>
#include <QImageWriter>
#include <QJsonArray>
#include <QPainter>
#include <QSet>
#include <QSvgGenerator>
#include <QUndoCommand>
#include <QUndoStack>
#include <functional>
#include <vector>

#include "designer/designer_p.h"
#include "qorvex/model/datasources.h"
#include "qorvex/model/query.h"

namespace qorvex {

namespace {

const QString kLayoutFormat = QStringLiteral("qorvex-layout");

// The sub-queries written under an owner's nodes, in tree order, not those nested in them.
void CollectSubqueries(const TqxQueryBuilderControlOwner* Owner, std::vector<TqxSubQuery*>& List) {
  std::vector<TqxQueryBuilderControlOwner*> children;
  Owner->GetChildOwners(children);
  for (TqxQueryBuilderControlOwner* child : children) {
    if (auto* query = dynamic_cast<TqxSubQuery*>(child))
      List.push_back(query);
    else if (child != nullptr)
      CollectSubqueries(child, List);
  }
}

using TqxOperandVisitor =
    std::function<void(TqxSubQuery* Query, const QString& Path, int Number, TqxUnionSubQuery*)>;

// Visits every operand of Query and of the sub-queries below it. A sub-query's path names
// the operand and the place in tree order it stands at in each enclosing query
// ("2.1/1.3"): it depends on the statement only, so it survives a reload of the same SQL.
void ForEachOperand(TqxSubQuery* Query, const QString& Path, const TqxOperandVisitor& Visit) {
  std::vector<TqxUnionSubQuery*> operands;
  Query->GetUnionGroup()->GetOperands(operands);
  for (std::size_t i = 0; i < operands.size(); ++i) {
    const int number = static_cast<int>(i) + 1;
    Visit(Query, Path, number, operands[i]);
    std::vector<TqxSubQuery*> inner;
    CollectSubqueries(operands[i], inner);
    for (std::size_t n = 0; n < inner.size(); ++n) {
      const QString step = QStringLiteral("%1.%2").arg(number).arg(n + 1);
      ForEachOperand(inner[n], Path.isEmpty() ? step : Path + QLatin1Char('/') + step, Visit);
    }
  }
}

// The key of a box: its sub-query, its operand, its alias or object name (names are
// compared without letter case) and which of several boxes of that name it is.
QString BoxKey(const QString& Path, int Operand, const QString& Name, int Occurrence) {
  return QStringLiteral("%1|%2|%3|%4").arg(Path).arg(Operand).arg(Name.toLower()).arg(Occurrence);
}

// Visits every box of the statement with its key parts: the sub-query's path, the operand's
// number, the alias or object name, and which of several boxes of that name it is.
using TqxBoxVisitor = std::function<void(const QString& Path, int Number, TqxDatasource* Box,
                                         const QString& Name, int Occurrence)>;
void ForEachBox(TqxSubQuery* Query, const TqxBoxVisitor& Visit) {
  ForEachOperand(Query, QString(),
                 [&](TqxSubQuery*, const QString& Path, int Number, TqxUnionSubQuery* Operand) {
                   QHash<QString, int> seen;
                   for (TqxDatasource* ds : Operand->GetDatasources()) {
                     const QString name = QString::fromStdString(ds->GetQualifier());
                     Visit(Path, Number, ds, name, seen[name.toLower()]++);
                   }
                 });
}

// Where a box is: its control's bounds, or the datasource's own before it has a control.
TqxRect BoxBounds(const TqxDatasource* Box) {
  if (const TqxControl* control = Box->GetDSControl())
    return control->GetBounds();
  return TqxRect{Box->GetLeft(), Box->GetTop(), Box->GetWidth(), Box->GetHeight()};
}

// The first clause keyword at the start of a line, at or above Line.
QString ClauseAbove(const QStringList& Lines, int Line) {
  static const char* const kClauses[] = {"SELECT",   "FROM",  "WHERE",  "GROUP BY", "HAVING",
                                         "ORDER BY", "UNION", "EXCEPT", "INTERSECT"};
  for (int i = std::min(Line, static_cast<int>(Lines.size()) - 1); i >= 0; --i) {
    for (const char* clause : kClauses) {
      if (Lines[i].startsWith(QLatin1String(clause), Qt::CaseInsensitive))
        return QLatin1String(clause);
    }
  }
  return QString();
}

QSet<QString> BoxNames(const QJsonObject& Layout) {
  QSet<QString> names;
  for (const QJsonValue& box : Layout.value(QStringLiteral("boxes")).toArray())
    names.insert(box.toObject().value(QStringLiteral("datasource")).toString().toLower());
  return names;
}

// A step's name from what changed between two states.
QString DeriveStepName(const TqxDiagramState& Before, const TqxDiagramState& After) {
  auto grewOrShrank = [](int Old, int New, const char* Grew, const char* Shrank) {
    return QString::fromLatin1(New > Old ? Grew : Shrank);
  };
  if (Before.Sql == After.Sql)
    return QStringLiteral("Move");
  if (Before.Subqueries != After.Subqueries)
    return grewOrShrank(Before.Subqueries, After.Subqueries, "Add Sub-query", "Remove Sub-query");
  if (Before.Operands != After.Operands)
    return grewOrShrank(Before.Operands, After.Operands, "Add Union", "Remove Union");
  if (Before.Datasources != After.Datasources)
    return grewOrShrank(Before.Datasources, After.Datasources, "Add Table", "Remove Table");
  if (Before.Links != After.Links)
    return grewOrShrank(Before.Links, After.Links, "Link", "Remove Link");
  if (BoxNames(Before.Layout) != BoxNames(After.Layout))
    return QStringLiteral("Rename");
  const QStringList before = Before.Sql.split(QStringLiteral("\r\n"));
  const QStringList after = After.Sql.split(QStringLiteral("\r\n"));
  int line = 0;
  while (line < before.size() && line < after.size() && before[line] == after[line])
    ++line;
  const QString clause = ClauseAbove(after, line);
  if (clause == QLatin1String("SELECT"))
    return QStringLiteral("Edit Columns");
  if (clause == QLatin1String("FROM"))
    return QStringLiteral("Edit Join");
  if (clause == QLatin1String("WHERE") || clause == QLatin1String("HAVING"))
    return QStringLiteral("Edit Criteria");
  if (clause == QLatin1String("GROUP BY"))
    return QStringLiteral("Edit Grouping");
  if (clause == QLatin1String("ORDER BY"))
    return QStringLiteral("Edit Sorting");
  if (!clause.isEmpty())
    return QStringLiteral("Edit Union");
  return QStringLiteral("Edit Query");
}

// One undo step: the states before and after. The change itself has already happened when
// the step is pushed, so its first redo does nothing.
class TqxDiagramStep : public QUndoCommand {
 public:
  TqxDiagramStep(TqxQueryBuilderPrivate* D, const QString& Name, TqxDiagramState Before,
                 TqxDiagramState After)
      : QUndoCommand(Name), D_(D), Before_(std::move(Before)), After_(std::move(After)) {}
  void undo() override {
    // The tab where the change was made stays in front, when it still exists.
    TqxDiagramState state = Before_;
    state.ActiveSubquery = After_.ActiveSubquery;
    state.ActiveOperand = After_.ActiveOperand;
    D_->Restore(state);
  }
  void redo() override {
    if (Done_) {
      Done_ = false;
      return;
    }
    D_->Restore(After_);
  }

 private:
  TqxQueryBuilderPrivate* D_;
  TqxDiagramState Before_;
  TqxDiagramState After_;
  bool Done_ = true;
};

}  // namespace

// ---------------------------------------------------------------------------------------
// State

QJsonObject TqxQueryBuilderPrivate::CaptureLayout() const {
  QJsonArray boxes;
  if (Q->IsDestroying() || Q->GetQuery() == nullptr)
    return QJsonObject();
  ForEachBox(Q->GetQuery(), [&](const QString& Path, int Number, TqxDatasource* Box,
                                const QString& Name, int Occurrence) {
    const TqxRect r = BoxBounds(Box);
    QJsonObject box{{QStringLiteral("subquery"), Path},   {QStringLiteral("operand"), Number},
                    {QStringLiteral("datasource"), Name}, {QStringLiteral("left"), r.Left},
                    {QStringLiteral("top"), r.Top},       {QStringLiteral("width"), r.Width},
                    {QStringLiteral("height"), r.Height}};
    if (Occurrence > 0)
      box.insert(QStringLiteral("occurrence"), Occurrence);
    boxes.append(box);
  });
  return QJsonObject{{QStringLiteral("format"), kLayoutFormat},
                     {QStringLiteral("version"), 1},
                     {QStringLiteral("boxes"), boxes}};
}

TqxDiagramState TqxQueryBuilderPrivate::Capture() const {
  TqxDiagramState state;
  if (Q->IsDestroying() || Q->GetQuery() == nullptr)
    return state;
  state.Sql = QString::fromStdString(Q->GetSQL());
  state.Layout = CaptureLayout();
  const TqxSubQuery* activeQuery = Q->GetActiveSubquery();
  const TqxUnionSubQuery* activeOperand = Q->GetActiveUnionSubquery();
  std::vector<TqxDatasourceBase*> parts;
  ForEachOperand(
      Q->GetQuery(), QString(),
      [&](TqxSubQuery* Query, const QString& Path, int Number, TqxUnionSubQuery* Operand) {
        if (Number == 1)
          ++state.Subqueries;
        ++state.Operands;
        if (Query == activeQuery && Operand == activeOperand) {
          state.ActiveSubquery = Path;
          state.ActiveOperand = Number;
        }
        state.Datasources += static_cast<int>(Operand->GetDatasources().size());
        parts.clear();
        Operand->GetFromClause()->GetItemsByType(parts, false, true);
        for (const TqxDatasourceBase* part : parts)
          state.Links += part->GetJoinsCount();
      });
  return state;
}

int TqxQueryBuilderPrivate::ApplyLayout(const QJsonObject& Layout) {
  if (Q->IsDestroying() || Q->GetQuery() == nullptr)
    return 0;
  QHash<QString, QJsonObject> byKey;
  for (const QJsonValue& value : Layout.value(QStringLiteral("boxes")).toArray()) {
    const QJsonObject box = value.toObject();
    byKey.insert(BoxKey(box.value(QStringLiteral("subquery")).toString(),
                        box.value(QStringLiteral("operand")).toInt(),
                        box.value(QStringLiteral("datasource")).toString(),
                        box.value(QStringLiteral("occurrence")).toInt()),
                 box);
  }
  int placed = 0;
  ForEachBox(Q->GetQuery(), [&](const QString& Path, int Number, TqxDatasource* Box,
                                const QString& Name, int Occurrence) {
    const auto found = byKey.constFind(BoxKey(Path, Number, Name, Occurrence));
    if (found == byKey.constEnd())
      return;
    const QJsonObject& box = *found;
    const auto number = [&](const char* Field, int Default) {
      const QJsonValue v = box.value(QLatin1String(Field));
      return v.isDouble() ? v.toInt(Default) : Default;
    };
    const TqxRect now = BoxBounds(Box);
    TqxRect r{number("left", now.Left), number("top", now.Top), number("width", now.Width),
              number("height", now.Height)};
    // A size of nothing is no size: the box keeps its own.
    if (r.Width <= 0 || r.Height <= 0) {
      r.Width = now.Width;
      r.Height = now.Height;
    }
    if (TqxControl* live = Box->GetDSControl()) {
      live->SetBounds(r);
    } else {
      Box->SetLeft(r.Left);
      Box->SetTop(r.Top);
      Box->SetWidth(r.Width);
      Box->SetHeidht(r.Height);
    }
    ++placed;
  });
  return placed;
}

// ---------------------------------------------------------------------------------------
// Steps

void TqxQueryBuilderPrivate::ModelReported() {
  if (Restoring > 0 || InLoad || Q->IsDestroying())
    return;
  RecordStep();
}

void TqxQueryBuilderPrivate::LoadHandled() {
  if (HasPendingLayout) {
    HasPendingLayout = false;
    ApplyLayout(PendingLayout);
    PendingLayout = QJsonObject();
  } else if (!KeptLayout.isEmpty()) {
    ApplyLayout(KeptLayout);
  }
  KeptLayout = QJsonObject();
  // A restore is running inside the history: it is not cleared under it.
  if (Restoring > 0) {
    ResetHistoryAfterLoad = false;
    return;
  }
  if (ResetHistoryAfterLoad) {
    ResetHistoryAfterLoad = false;
    Undo->clear();
    Recorded = Capture();
    return;
  }
  RecordStep(QStringLiteral("Edit SQL"));
}

void TqxQueryBuilderPrivate::RecordStep(const QString& Name) {
  if (Restoring > 0 || Undo == nullptr || Q->IsDestroying())
    return;
  TqxDiagramState now = Capture();
  if (now.SameContent(Recorded)) {
    Recorded = std::move(now);
    return;
  }
  const QString name = Name.isEmpty() ? DeriveStepName(Recorded, now) : Name;
  TqxDiagramState before = std::move(Recorded);
  Recorded = now;
  Undo->push(new TqxDiagramStep(this, name, std::move(before), std::move(now)));
}

void TqxQueryBuilderPrivate::Restore(const TqxDiagramState& State) {
  struct Guard {
    int& Count;
    explicit Guard(int& C) : Count(C) { ++Count; }
    ~Guard() { --Count; }
  } guard(Restoring);
  // A load still waiting would otherwise arrive after the restored text (and a second
  // load message loads no text at all).
  if (Q->IsSQLLoading())
    QCoreApplication::sendPostedEvents(Q, kLoadSQLEvent);
  if (QString::fromStdString(Q->GetSQL()) != State.Sql) {
    Q->SetSQL(State.Sql.toStdString());
    QCoreApplication::sendPostedEvents(Q, kLoadSQLEvent);
  }
  ApplyLayout(State.Layout);
  // Back to the tab of the change.
  ForEachOperand(
      Q->GetQuery(), QString(),
      [&](TqxSubQuery* Query, const QString& Path, int Number, TqxUnionSubQuery* Operand) {
        if (Path != State.ActiveSubquery || Number != State.ActiveOperand)
          return;
        Run(Q, [&] {
          Q->SetActiveSubquery(Query);
          Query->SetActiveUnionSubquery(Operand);
        });
      });
  if (Pages != nullptr)
    Pages->SyncWithModel();
  Recorded = Capture();
}

// ---------------------------------------------------------------------------------------
// Export

QWidget* TqxQueryBuilderPrivate::CurrentCanvas() const {
  TqxUnionSubQuery* operand = Q->IsDestroying() ? nullptr : Q->GetActiveUnionSubquery();
  auto* control =
      operand != nullptr ? dynamic_cast<TqxWidgetControl*>(operand->GetControl()) : nullptr;
  auto* page =
      control != nullptr ? qobject_cast<TqxUnionSubQueryTabSheet*>(control->GetWidget()) : nullptr;
  return page != nullptr ? page->GetWorkArea()->Canvas() : nullptr;
}

namespace {
// The canvas grown to hold every box, whatever part of it the work area shows.
QSize PrepareCanvas(QWidget* Canvas) {
  const QSize size = Canvas->size().expandedTo(Canvas->minimumSize()).expandedTo(QSize(1, 1));
  if (Canvas->size() != size)
    Canvas->resize(size);
  return size;
}
}  // namespace

// ---------------------------------------------------------------------------------------
// The builder's face

QUndoStack* TqxQueryBuilder::UndoStack() const {
  return d_->Undo;
}

void TqxQueryBuilder::OpenQuery(const QString& Sql, const QJsonDocument& Layout) {
  if (IsSQLLoading())
    QCoreApplication::sendPostedEvents(this, kLoadSQLEvent);
  d_->HasPendingLayout = Layout.isObject();
  d_->PendingLayout = Layout.object();
  d_->ResetHistoryAfterLoad = true;
  setSql(Sql);
}

QJsonDocument TqxQueryBuilder::SaveLayout() const {
  return QJsonDocument(d_->CaptureLayout());
}

int TqxQueryBuilder::LoadLayout(const QJsonDocument& Layout, QString* Error) {
  const QJsonObject root = Layout.object();
  const QJsonValue format = root.value(QStringLiteral("format"));
  if (!Layout.isObject() || !root.value(QStringLiteral("boxes")).isArray() ||
      (!format.isUndefined() && format.toString() != kLayoutFormat)) {
    if (Error != nullptr)
      *Error = QStringLiteral(
          "The document is not a Qorvex layout (an object with a \"boxes\" "
          "list is expected)");
    return -1;
  }
  const int placed = d_->ApplyLayout(root);
  d_->RecordStep(QStringLiteral("Move"));
  return placed;
}

QImage TqxQueryBuilder::RenderDiagram(qreal Scale) {
  QWidget* canvas = d_->CurrentCanvas();
  if (canvas == nullptr || !(Scale > 0 && Scale <= 8))
    return QImage();
  const QSize size = PrepareCanvas(canvas);
  QImage image(size * Scale, QImage::Format_ARGB32_Premultiplied);
  if (image.isNull())
    return image;
  image.setDevicePixelRatio(Scale);
  image.fill(Qt::white);
  QPainter painter(&image);
  d_->Exporting = true;
  canvas->render(&painter);
  d_->Exporting = false;
  return image;
}

bool TqxQueryBuilder::ExportImage(const QString& Path, qreal Scale, QString* Error) {
  auto fail = [&](const QString& Message) {
    if (Error != nullptr)
      *Error = Message;
    return false;
  };
  if (!(Scale > 0 && Scale <= 8))
    return fail(QStringLiteral("The scale must be above 0 and at most 8, not %1").arg(Scale));
  const QImage image = RenderDiagram(Scale);
  if (image.isNull())
    return fail(QStringLiteral("There is no diagram to export"));
  QImageWriter writer(Path);
  if (!writer.write(image))
    return fail(QStringLiteral("Cannot write %1: %2").arg(Path, writer.errorString()));
  return true;
}

bool TqxQueryBuilder::ExportSvg(const QString& Path, QString* Error) {
  auto fail = [&](const QString& Message) {
    if (Error != nullptr)
      *Error = Message;
    return false;
  };
  QWidget* canvas = d_->CurrentCanvas();
  if (canvas == nullptr)
    return fail(QStringLiteral("There is no diagram to export"));
  QFile file(Path);
  if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate))
    return fail(QStringLiteral("Cannot write %1: %2").arg(Path, file.errorString()));
  const QSize size = PrepareCanvas(canvas);
  QSvgGenerator svg;
  svg.setOutputDevice(&file);
  svg.setSize(size);
  svg.setViewBox(QRect(QPoint(0, 0), size));
  // Fonts keep the size they have on screen.
  svg.setResolution(canvas->logicalDpiX());
  svg.setTitle(QStringLiteral("Query diagram"));
  QPainter painter;
  if (!painter.begin(&svg))
    return fail(QStringLiteral("Cannot write %1").arg(Path));
  d_->Exporting = true;
  canvas->render(&painter);
  d_->Exporting = false;
  painter.end();
  file.close();
  if (file.error() != QFileDevice::NoError)
    return fail(QStringLiteral("Cannot write %1: %2").arg(Path, file.errorString()));
  return true;
}

}  // namespace qorvex
