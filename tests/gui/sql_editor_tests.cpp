// The designer program's SQL editor: in step with the diagram both ways, highlighting by the
// scanner, the error mark, completion from the model and Format.
#include <QClipboard>

#include "gui/window_fixture.h"
#include "main_window.h"
#include "qorvex/ast/builder.h"
#include "qorvex/ast/query.h"
#include "sql_editor.h"
#include "sql_lexer.h"

namespace qorvex::testing_gui {
namespace {

using Sci = QsciScintillaBase;

// One letter per byte for the style the lexer gave it.
std::string StyleMask(TqxSqlEditor& Editor) {
  // Styled from where styling stopped, as the editor does before painting.
  Editor.SendScintilla(Sci::SCI_COLOURISE,
                       static_cast<unsigned long>(Editor.SendScintilla(Sci::SCI_GETENDSTYLED)),
                       -1L);
  static const char kLetters[] = " KIQSNCOPE";
  std::string mask;
  for (long at = 0; at < Editor.SendScintilla(Sci::SCI_GETLENGTH); ++at) {
    const long style = Editor.SendScintilla(Sci::SCI_GETSTYLEAT, static_cast<unsigned long>(at));
    mask += style >= 0 && style < TqxSqlLexer::StyleCount ? kLetters[style] : '?';
  }
  return mask;
}

TEST(SqlLexer, StylesAreTheScannersTokens) {
  struct Case {
    const char* Sql;
    const char* Mask;
  };
  // K keyword, I name, Q quoted name, S string, N number, C comment, O operator,
  // P parameter, E error. Non-reserved keywords ("c") stand as names.
  const Case cases[] = {
      {"select c.Name, \"a b\" from T", "KKKKKK IOIIIIO QQQQQ KKKK I"},
      {"where n >= 1.5 or m <> 0x1F", "KKKKK I OO NNN KK I OO NNNN"},
      {"select 'it''s', @p, {d '2020'}", "KKKKKK SSSSSSSO PPO SSSSSSSSSS"},
      {"select #, [x]", "KKKKKK EO QQQ"},
      // A string across lines, and a line comment that runs on to the end of the text
      // because the scanner ends it only at LF CR.
      {"select 'a\nb' x -- note\nfrom t", "KKKKKK SSSSS I CCCCCCCCCCCCCC"},
      {"select x -- note\n\rfrom t", "KKKKKK I CCCCCCC  KKKK I"},
      {"select 'open\nfrom t", "KKKKKK EEEEEEEEEEEE"},
  };
  TqxSqlEditor editor;
  for (const Case& c : cases) {
    editor.setText(QString::fromUtf8(c.Sql));
    EXPECT_EQ(StyleMask(editor), c.Mask) << c.Sql;
  }
}

TEST(SqlLexer, EditsRestyleAsAFreshText) {
  // Edits inside a string that spans lines, and a comment that swallows the lines after
  // it: restyling from the edited line on must end as a fresh styling does.
  TqxSqlEditor edited;
  edited.setText(QStringLiteral("select 'a\nb\nc' x\nfrom t\nwhere y = 1"));
  StyleMask(edited);
  TqxSqlEditor fresh;
  auto check = [&] {
    fresh.setText(edited.text());
    EXPECT_EQ(StyleMask(edited), StyleMask(fresh)) << edited.text().toStdString();
  };
  auto insert = [&](const char* Before, const char* Text) {
    const auto at = static_cast<unsigned long>(edited.text().indexOf(QString::fromUtf8(Before)));
    edited.SendScintilla(Sci::SCI_INSERTTEXT, at, Text);
    check();
  };
  insert("c' x", "y");
  insert("b\n", "'");
  insert("from", "-- ");
  insert("y = 1", "z");
  edited.SendScintilla(Sci::SCI_DELETERANGE,
                       static_cast<unsigned long>(edited.text().indexOf(QStringLiteral("-- "))),
                       3L);
  check();
}

class SqlEditorWindow : public WindowTest {
 protected:
  void SetUp() override {
    WindowTest::SetUp();
    Metadata.OnGetTableNames = [this](TqxEventMetadataProvider*, std::vector<std::string>& Names,
                                      bool) {
      for (const auto& [name, fields] : Tables)
        Names.push_back(name);
    };
    OpenWindow();
  }
  TqxSqlEditor* Editor() const { return Window->Editor(); }
  // The statement written back on one line.
  std::string OneLine(const QString& Text) {
    std::string out;
    TSQLBuilderPlainText writer(&out);
    writer.ResetBuilder();
    Syntax.ParseSelect(Text.toStdString())->BuildSQL(writer, false);
    return out;
  }
};

TEST_F(SqlEditorWindow, TextAndDiagramFollowEachOther) {
  Apply("select c.Name from Customers c");
  ASSERT_EQ(Window->Builder()->findChildren<Box*>().size(), 1);
  EXPECT_EQ(Editor()->toPlainText(), "select c.Name from Customers c")
      << "typed text is not reformatted under the cursor";
  // A diagram edit writes the pane.
  ClickCheck(Window->Builder()->findChildren<Box*>().front(), 3);
  EXPECT_TRUE(Editor()->toPlainText().contains("c.Country"));
  EXPECT_FALSE(Editor()->toPlainText().contains("\r"));
}

TEST_F(SqlEditorWindow, SyntaxErrorMarksItsTokenAndKeepsTheDiagram) {
  const QString good = QStringLiteral(
      "select c.Name, o.OrderDate from Customers c inner join Orders o on c.Id = o.CustomerId");
  Apply(good);
  ASSERT_EQ(Window->Builder()->findChildren<Box*>().size(), 2);
  const std::string sql = Window->Builder()->GetSQL();

  struct Case {
    const char* Text;
    const char* Marked;
    const char* At;  // the text from the marked token on
    const char* Place;
  };
  // Multi-byte characters and blank lines before the error do not move the mark; a
  // statement that stops early marks its last token.
  const Case cases[] = {
      {"select 'ñandú' x, c.Name\n\nfrom Customers c\nwhere c.Id = = 3", "=", "= = 3", nullptr},
      {"select c.Name\nfrom Customers c\nwhere c.Id = = 3", "=", "= = 3", "line 3, column 12"},
      {"select c.Name\r\nfrom Customers c wher c.Id = 1", "wher", "wher", "line 2, column 18"},
      {"select c.Name from Customers c where", "where", "where", "line 1, column 32"},
  };
  for (const Case& c : cases) {
    Apply(QString::fromUtf8(c.Text));
    EXPECT_EQ(Editor()->MarkedText().toStdString(), c.Marked) << c.Text;
    EXPECT_EQ(Window->Builder()->GetSQL(), sql) << c.Text;
    EXPECT_EQ(Window->Builder()->findChildren<Box*>().size(), 2) << c.Text;
    // The message is the tooltip of the mark and of nothing else.
    const QByteArray bytes = Editor()->text().toUtf8();
    const int at = static_cast<int>(bytes.indexOf(QByteArray(c.At)));
    EXPECT_FALSE(Editor()->ErrorToolTipAt(at).isEmpty()) << c.Text;
    EXPECT_EQ(Editor()->ErrorToolTipAt(at), Window->StatusText());
    if (c.Place != nullptr) {
      EXPECT_TRUE(Window->StatusText().contains(c.Place)) << Window->StatusText().toStdString();
    }
    EXPECT_TRUE(Editor()->ErrorToolTipAt(0).isEmpty()) << c.Text;
  }
  // A pause in typing applies the text as well, and the mark goes.
  Editor()->setPlainText("select * from Orders o");
  QTest::qWait(1000);
  Settle();
  ASSERT_EQ(Window->Builder()->findChildren<Box*>().size(), 1);
  EXPECT_EQ(Window->Builder()->findChildren<Box*>().front()->GetCaption(), "Orders o");
  EXPECT_TRUE(Editor()->MarkedText().isEmpty());
  EXPECT_TRUE(Editor()->ErrorToolTipAt(0).isEmpty());
}

TEST_F(SqlEditorWindow, CompletesColumnsAfterAliasAndNamesElsewhere) {
  Apply(
      QStringLiteral("select c.Name from Customers c inner join Orders o on c.Id = o.CustomerId"));
  struct Case {
    const char* Text;
    std::vector<std::string> Expected;
    int WordLength;
  };
  const Case cases[] = {
      {"select c.", {"Country", "Id", "Name"}, 0},
      {"select O.cu", {"CustomerId"}, 2},
      {"select x from Cu", {"CURRENT_TIMESTAMP", "CURRENT_USER", "Customers"}, 2},
      {"select x from cu", {"current_timestamp", "current_user", "Customers"}, 2},
      {"select x.", {}, 0},
  };
  for (const Case& c : cases) {
    Editor()->setText(QString::fromUtf8(c.Text));
    int length = -1;
    std::vector<std::string> offered;
    for (const QString& name :
         Editor()->Completions(static_cast<int>(std::strlen(c.Text)), &length))
      offered.push_back(name.toStdString());
    EXPECT_EQ(offered, c.Expected) << c.Text;
    EXPECT_EQ(length, c.WordLength) << c.Text;
  }
  // Typing "o." opens the list; Return takes its first entry.
  Editor()->setText(QStringLiteral("select "));
  Editor()->setFocus();
  Editor()->SendScintilla(Sci::SCI_DOCUMENTEND);
  QTest::keyClicks(Editor(), QStringLiteral("o."));
  ASSERT_TRUE(Editor()->SendScintilla(Sci::SCI_AUTOCACTIVE) != 0);
  QTest::keyClick(Editor(), Qt::Key_Return);
  EXPECT_EQ(Editor()->text().toStdString(), "select o.CustomerId");
  // Ctrl+Space opens it anywhere.
  QTest::keyClicks(Editor(), QStringLiteral(", c.N"));
  QTest::keyClick(Editor(), Qt::Key_Escape);
  ASSERT_EQ(Editor()->SendScintilla(Sci::SCI_AUTOCACTIVE), 0);
  QTest::keyClick(Editor(), Qt::Key_Space, Qt::ControlModifier);
  QTest::keyClick(Editor(), Qt::Key_Return);
  EXPECT_EQ(Editor()->text().toStdString(), "select o.CustomerId, c.Name");
}

TEST_F(SqlEditorWindow, FormatPutsClausesOnLinesAndKeepsTheStatement) {
  const QString text = QStringLiteral(
      "select c.Name, o.OrderDate from Customers c inner join Orders o on c.Id = o.CustomerId "
      "where c.Country = 'DE' group by c.Name, o.OrderDate order by 1");
  Editor()->setText(text);
  Editor()->setFocus();
  QTest::keyClick(Editor(), Qt::Key_F, Qt::ControlModifier | Qt::ShiftModifier);
  const QStringList lines = Editor()->text().split(QLatin1Char('\n'));
  ASSERT_GE(lines.size(), 5) << Editor()->text().toStdString();
  for (const char* clause : {"SELECT", "FROM", "WHERE", "GROUP BY", "ORDER BY"})
    EXPECT_EQ(lines.filter(QRegularExpression(QStringLiteral("^") + clause)).size(), 1)
        << clause << "\n"
        << Editor()->text().toStdString();
  EXPECT_EQ(OneLine(Editor()->text()), OneLine(text));

  // One line on the clipboard; undo brings the typed text back in one step.
  QTest::keyClick(Editor(), Qt::Key_C, Qt::ControlModifier | Qt::ShiftModifier);
  EXPECT_EQ(QApplication::clipboard()->text().toStdString(), OneLine(text));
  Editor()->undo();
  EXPECT_EQ(Editor()->text().toStdString(), text.toStdString());

  // Comments cannot be kept: the status says so.
  Editor()->setText(QStringLiteral("select a -- why\n\rfrom t"));
  EXPECT_TRUE(Editor()->Format());
  EXPECT_TRUE(Window->StatusText().contains(QStringLiteral("comments")))
      << Window->StatusText().toStdString();
  Editor()->setText(QStringLiteral("select '--' from t"));
  EXPECT_TRUE(Editor()->Format());
  EXPECT_EQ(Window->StatusText(), "Formatted");

  // Text that does not parse stays as it is, with the error marked.
  Editor()->setText(QStringLiteral("select a from where"));
  EXPECT_FALSE(Editor()->Format());
  EXPECT_EQ(Editor()->text().toStdString(), "select a from where");
  EXPECT_EQ(Editor()->MarkedText().toStdString(), "where");
}

}  // namespace
}  // namespace qorvex::testing_gui
