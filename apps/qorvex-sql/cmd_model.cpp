// qorvex-sql model: loads each statement into a headless query builder and prints the SQL
// the model writes back.
//
// The builder gets the SQL-92 syntax provider and a metadata provider: the database
// given with --sqlite or --odbc, else one that knows no objects. Each statement of the
// input (split on ";" tokens) goes into a fresh builder through its SQL property and the
// queued load message; the regenerated statement is written as `format` writes it, one
// clause per line or, with --one-line, on one line, separated by a line holding ";".
// With --summary the model follows the SQL as "--" comment lines: every query with its
// operands, datasources with aliases and join kinds, links with their fields, join kinds
// and cardinalities, and the select-list rows with all their columns. A datasource whose
// columns the database could not describe is followed by a "metadata error" line with
// the provider's message; it loads all the same, with no fields.
#include <memory>
#include <ostream>
#include <sstream>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

#include "command.h"
#include "qorvex/ast/builder.h"
#include "qorvex/ast/expressions.h"
#include "qorvex/ast/from.h"
#include "qorvex/ast/query.h"
#include "qorvex/core/errors.h"
#include "qorvex/metadata/event_provider.h"
#include "qorvex/model/model.h"
#include "qorvex/scanner/statements.h"
#include "qorvex/syntax/components.h"
#if QORVEX_SQLITE_AVAILABLE
#include "qorvex/metadata/sqlite_provider.h"
#endif
#if QORVEX_ODBC_AVAILABLE
#include "qorvex/metadata/odbc_provider.h"
#endif

namespace qorvex::tool {
namespace {

constexpr const char* kUsage =
    "[--sqlite FILE | --odbc CONNECTION] [--one-line] [--summary] [FILE]";

struct Options {
  std::string kind;
  std::string target;
  bool oneLine = false;
  bool summary = false;
  std::string path;
};

Options ReadOptions(const std::vector<std::string>& args) {
  Options o;
  bool havePath = false;
  for (std::size_t i = 0; i < args.size(); ++i) {
    const std::string& arg = args[i];
    if (arg == "--sqlite" || arg == "--odbc") {
      if (!o.kind.empty())
        throw UsageError{"give one database: --sqlite FILE or --odbc CONNECTION"};
      if (i + 1 >= args.size())
        throw UsageError{arg + " needs an argument"};
      o.kind = arg;
      o.target = args[++i];
    } else if (arg == "--one-line") {
      o.oneLine = true;
    } else if (arg == "--summary") {
      o.summary = true;
    } else if (arg.size() > 1 && arg[0] == '-') {
      throw UsageError{"unknown option " + arg};
    } else if (havePath) {
      throw UsageError{"more than one input file"};
    } else {
      o.path = arg;
      havePath = true;
    }
  }
  return o;
}

// The metadata provider and the connection it refers to.
struct Metadata {
#if QORVEX_SQLITE_AVAILABLE
  std::unique_ptr<TqxSQLiteConnection> SQLiteConnection;
#endif
#if QORVEX_ODBC_AVAILABLE
  std::unique_ptr<TqxODBCConnection> ODBCConnection;
#endif
  std::unique_ptr<TqxBaseMetadataProvider> Provider;
};

Metadata OpenMetadata(const Options& o) {
  Metadata m;
  if (o.kind.empty()) {
    m.Provider = std::make_unique<TqxEventMetadataProvider>();
  } else if (o.kind == "--sqlite") {
#if QORVEX_SQLITE_AVAILABLE
    m.SQLiteConnection = std::make_unique<TqxSQLiteConnection>(o.target);
    m.SQLiteConnection->Open();
    m.Provider = std::make_unique<TqxSQLiteMetadataProvider>(m.SQLiteConnection.get());
#else
    throw UsageError{"this build has no SQLite support"};
#endif
  } else {
#if QORVEX_ODBC_AVAILABLE
    m.ODBCConnection = std::make_unique<TqxODBCConnection>(o.target);
    m.Provider = std::make_unique<TqxODBCMetadataProvider>(m.ODBCConnection.get());
#else
    throw UsageError{"this build has no ODBC support"};
#endif
  }
  return m;
}

std::string WithoutCR(const std::string& text) {
  std::string out;
  out.reserve(text.size());
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] == '\r' && i + 1 < text.size() && text[i + 1] == '\n')
      continue;
    out += text[i];
  }
  return out;
}

std::string Quote(const std::string& text) {
  return "\"" + text + "\"";
}

std::string CardinalityName(TqxQueryBuilderLinkCardinality c) {
  switch (c) {
    case qblcOne:
      return "one";
    case qblcMany:
      return "many";
    default:
      return "unknown";
  }
}

// How a datasource joins the one before it: its join kind, "," or nothing for a first.
std::string JoinText(const TqxDatasourceBase& DS) {
  const TqxDatasourceGroup* group = DS.GetGroup();
  if (group != nullptr && group->GetCount() > 0 && group->GetItems(0) == &DS)
    return "first";
  if (const TSQLJoinKind* kind = DS.GetJoinKind()) {
    std::string text = kind->GetSimpleSQL();
    while (!text.empty() && text.front() == ' ')
      text.erase(text.begin());
    return text;
  }
  return ",";
}

std::string DatasourceName(const TqxDatasourceBase* DS) {
  if (DS == nullptr)
    return "?";
  if (const auto* leaf = dynamic_cast<const TqxDatasource*>(DS))
    return leaf->GetQualifier();
  return "(group)";
}

// The metadata provider's errors, by datasource, in the order they came.
using MetadataErrors = std::vector<std::pair<const TqxDatasource*, std::string>>;

class SummaryWriter {
 public:
  SummaryWriter(std::ostream& Out, TqxBaseQueryBuilder& Builder, const MetadataErrors& Errors)
      : Out_(Out), Builder_(Builder) {
    for (const auto& [source, message] : Errors)
      Errors_[source].push_back(message);
  }

  void Write() {
    for (int i = 0; i < Builder_.GetSubQueriesCount(); ++i) {
      TqxSubQuery* query = Builder_.GetSubQueries(i);
      Line(0, "query " + Quote(Builder_.GetTabHeaderText(query)));
      // The operands' names, as GetName gives them, numbered once per query.
      std::vector<TqxUnionSubQuery*> operands;
      query->GetUnionGroup()->GetOperands(operands);
      OperandNames_.clear();
      for (std::size_t n = 0; n < operands.size(); ++n)
        OperandNames_.emplace(operands[n], "Q" + std::to_string(n + 1));
      WriteGroup(*query->GetUnionGroup(), 1);
    }
  }

 private:
  void Line(int Depth, const std::string& Text) {
    Out_ << "--" << std::string(static_cast<std::size_t>(Depth) * 2 + 1, ' ') << Text << '\n';
  }

  void WriteGroup(const TqxUnionGroup& Group, int Depth) {
    for (int i = 0; i < Group.GetCount(); ++i) {
      const TqxQueryBase* item = Group.GetItems(i);
      const std::string op =
          i == 0 ? std::string() : " operator " + Quote(item->GetUnionOperator());
      if (const auto* operand = dynamic_cast<const TqxUnionSubQuery*>(item)) {
        Line(Depth,
             "operand " + OperandName(*operand) + op + (operand->GetDistinct() ? " distinct" : ""));
        WriteOperand(*operand, Depth + 1);
      } else if (const auto* group = dynamic_cast<const TqxUnionGroup*>(item)) {
        Line(Depth, "group" + op);
        WriteGroup(*group, Depth + 1);
      }
    }
  }

  void WriteDatasources(const TqxDatasourceGroup& Group, int Depth) {
    for (int i = 0; i < Group.GetCount(); ++i) {
      const TqxDatasourceBase* ds = Group.GetItems(i);
      std::string text;
      if (const auto* leaf = dynamic_cast<const TqxDatasource*>(ds)) {
        const std::string kind = dynamic_cast<const TqxDataSourceQuery*>(ds) != nullptr ? "query"
                                 : dynamic_cast<const TqxDataSourceObject*>(ds) != nullptr
                                     ? "object"
                                     : "source";
        text = "datasource " + kind + " " +
               Quote(leaf->GetFromSource() != nullptr ? leaf->GetFromSource()->GetSimpleExpression()
                                                      : "");
        text += " alias " + Quote(leaf->GetAlias()) + " join " + Quote(JoinText(*ds));
        text += " fields " + std::to_string(leaf->GetFields().size());
        Line(Depth, text);
        if (auto errors = Errors_.find(leaf); errors != Errors_.end()) {
          for (const std::string& message : errors->second)
            Line(Depth + 1, "metadata error " + Quote(message));
        }
      } else if (const auto* group = dynamic_cast<const TqxDatasourceGroup*>(ds)) {
        Line(Depth, "datasource group join " + Quote(JoinText(*ds)));
        WriteDatasources(*group, Depth + 1);
      }
      for (int l = 0; l < ds->GetJoinsCount(); ++l)
        WriteLink(*ds->GetJoins(l), Depth + 1);
    }
  }

  void WriteLink(const TqxLink& Link, int Depth) {
    std::string text = "link " + DatasourceName(Link.GetLeftDatasource());
    if (!Link.GetLeftField().empty())
      text += "." + Link.GetLeftField();
    text += " - " + DatasourceName(Link.GetRightDatasource());
    if (!Link.GetRightField().empty())
      text += "." + Link.GetRightField();
    text += " join " + Quote(JoinText(*Link.GetOwnerDatasource()));
    text += " cardinality " + CardinalityName(Link.GetLeftCardinality()) + ":" +
            CardinalityName(Link.GetRightCardinality());
    text += " outer " + std::string(Link.GetLeftType() == ctOuter ? "left" : "-") + ":" +
            std::string(Link.GetRightType() == ctOuter ? "right" : "-");
    if (Link.GetLinkExpression() != nullptr)
      text += " on " + Quote(Link.GetLinkExpression()->GetSimpleSQL());
    Line(Depth, text);
  }

  void WriteOperand(const TqxUnionSubQuery& Operand, int Depth) {
    WriteDatasources(*Operand.GetFromClause(), Depth);
    const TqxSelectList& list = *Operand.GetSelectList();
    for (int i = 0; i < list.GetCount(); ++i) {
      const TqxSelectItem& row = *list.GetItems(i);
      if (row.IsEmpty())
        continue;
      std::string text =
          "row " + std::to_string(i + 1) + ": output " + (row.GetSelect() ? "yes" : "no");
      text += " expression " + Quote(row.GetExpressionText());
      text += " alias " + Quote(row.GetAlias());
      text += " sort " + Quote(row.GetSortTypeName());
      text += " order " + Quote(row.GetSortOrderName());
      text += " group " + Quote(row.GetGroupByTypeName());
      text += " criteria [";
      for (int c = 0; c < row.GetConditionsCount(); ++c) {
        if (c > 0)
          text += ", ";
        text += Quote(row.GetCondition(c));
      }
      text += "]";
      Line(Depth, text);
    }
  }

  std::string OperandName(const TqxUnionSubQuery& Operand) const {
    auto it = OperandNames_.find(&Operand);
    return it != OperandNames_.end() ? it->second : Operand.GetName();
  }

  std::ostream& Out_;
  TqxBaseQueryBuilder& Builder_;
  // The errors grouped by datasource, each group in the order they came.
  std::unordered_map<const TqxDatasource*, std::vector<std::string>> Errors_;
  std::unordered_map<const TqxUnionSubQuery*, std::string> OperandNames_;
};

int RunModel(const std::vector<std::string>& args, std::ostream& out, std::ostream& err) {
  const Options o = ReadOptions(args);
  const Input input = ReadInput(o.path);
  Metadata metadata = OpenMetadata(o);
  TqxSQL92SyntaxProvider syntax;

  int status = kExitOk;
  bool first = true;
  for (const TqxStatementText& statement : SplitStatements(input.text)) {
    std::string text;
    try {
      TqxBaseQueryBuilder builder;
      MetadataErrors errors;
      builder.OnMetadataError = [&errors](TqxBaseQueryBuilder*, TqxDatasource* ADatasource,
                                          const std::string& AMessage) {
        errors.emplace_back(ADatasource, AMessage);
      };
      builder.SetSyntaxProvider(&syntax);
      builder.SetMetadataProvider(metadata.Provider.get());
      builder.SetSQL(std::string(statement.text));
      builder.ProcessMessages();
      std::unique_ptr<TSQLSelectStatement> tree = builder.GetStatementCopy();
      TSQLBuilderPlainText writer(&text);
      writer.ResetBuilder();
      tree->BuildSQL(writer, !o.oneLine);
      text = WithoutCR(text);
      if (text.empty() || text.back() != '\n')
        text += '\n';
      if (o.summary) {
        std::ostringstream summary;
        SummaryWriter(summary, builder, errors).Write();
        text += summary.str();
      }
    } catch (const EqxSQLError& e) {
      const TqxScriptLocation at =
          e.line > 0 ? ToScriptLocation(statement, e.pos, e.line, e.col)
                     : TqxScriptLocation{statement.pos, statement.line, statement.col};
      err << input.name << ':' << at.line << ':' << at.col << ": error: " << e.what();
      if (e.line > 0)
        err << " near \"" << e.tokenText << '"';
      err << '\n';
      status = kExitRejected;
      continue;
    } catch (const std::exception& e) {
      err << input.name << ':' << statement.line << ':' << statement.col << ": error: " << e.what()
          << '\n';
      status = kExitRejected;
      continue;
    }
    if (!first)
      out << ";\n";
    first = false;
    out << text;
  }
  return status;
}

const CommandRegistration registration("model", kUsage, RunModel);

}  // namespace
}  // namespace qorvex::tool
