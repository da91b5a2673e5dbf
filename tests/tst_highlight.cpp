// The syntax highlighter: its rule list, the colours of the cases a reader
// of a program meets, colouring the lines an editor shows as it shows them,
// and line-for-line agreement with a reference that runs every rule's
// pattern over every line.

#include <QAbstractTextDocumentLayout>
#include <QPlainTextDocumentLayout>
#include <QPointer>
#include <QRandomGenerator>
#include <QScrollBar>
#include <QTextBlock>
#include <QTextCodec>
#include <QTextCursor>
#include <QTextDocument>
#include <QTextLayout>
#include <QtTest>

#include <memory>

#include "editorsupport.h"
#include "editwindow.h"
#include "highlightcomparison.h"
#include "parsedpattern.h"
#include "patternstart.h"
#include "simplepattern.h"
#include "referencesyntaxer.h"
#include "syntaxer.h"
#include "viewcolouring.h"
#include "testsupport.h"
#include "textedit.h"
#include "zusamples.h"
#include "zusourcecode.h"

namespace {

QString patternOf(const Syntaxer::HighRule &rule)
{
    return rule.pattern.pattern();
}

// Each name alone, inside a word, between punctuation and twice in a row.
QStringList linesAround(const QStringList &names)
{
    QStringList lines;
    for (const QString &name : names) {
        lines << name << QStringLiteral("a") + name + QStringLiteral("b")
              << QStringLiteral("(") + name + QStringLiteral(") ") + name + QStringLiteral("; ") + name
              << name + name + QStringLiteral(" x") + name + QStringLiteral("y ") + name;
    }
    return lines;
}

} // namespace

class TestHighlight : public QObject
{
    Q_OBJECT

private:
    // An editor holding the text, loaded from its program file as the window
    // loads one.
    ZuSourceCode *openEditor(const QString &text);
    // The editor holding the text, highlighted by a Syntaxer built from the
    // two lists.
    ZuSourceCode *highlighted(const QString &text, const QStringList &operations,
                              const QStringList &types, Syntaxer **syntaxer = nullptr);
    // The colour map of every line of the text.
    QStringList colours(const QString &text, const QStringList &operations,
                        const QStringList &types);
    // An editor holding the text, with a Syntaxer of its own, shown; its
    // first line has been coloured.
    ZuSourceCode *shownEditor(const QString &text, const QStringList &operations,
                              const QStringList &types);
    // Highlights the text with both highlighters and compares every line.
    void compareWithReference(const QString &text, const QStringList &operations,
                              const QStringList &types);

    TempCurrentDir workDir;
    TextEdit *plugin = nullptr;
    EditWindow *window = nullptr;
    QList<QPointer<QWidget>> pages;
    int editorCount = 0;

private slots:
    void init();
    void cleanup();

    // The rules
    void ruleListHoldsNameRulesThenLastRuleAgainThenFixedRules();
    void withoutSecondListLastFirstListRuleIsRepeated();
    void emptyListsGiveEmptyPatternRuleAndFourFixedRules();
    void everyCharacterOfTheOperatorClassDropsWordBoundaries();
    void listsChangedAfterConstructionChangeNothing();
    void attachesToTheDocumentUnderTheGivenParent();
    void highlightsADocumentWithoutAnEditor();

    // Colours
    void plainFirstListNameIsRedBoldOnlyAsWholeWord();
    void firstListNameWithEqualsOrUnderscoreIsRedBoldInsideWords();
    void secondListNameIsBlueOnlyAsWholeWord();
    void nameInBothListsIsBlueNormal();
    void numbersAreBlueFromTheirLeadingWordBoundary();
    void digitsInsideIdentifiersAreNotNumbers();
    void joinedStringsAreGreenFromFirstToLastQuote();
    void openingParenthesisBetweenWordsIsMagentaBold();
    void textAfterTwoBackticksIsGreyOverridingEarlierColours();
    void singleBacktickIsGreyOnItsOwn();
    void laterRulesOverwriteEarlierOnes();
    void blockStateIsZeroAfterHighlighting();
    void longLineLeftUnhighlighted();
    void lineGrowingPastTheLimitLosesItsColours();

    // Colouring as the editor shows its lines
    void editorNotShownColoursNothing();
    void openedProgramColoursOnlyTheLinesShown();
    void pagingThroughGivesTheColoursOfAWholeDocumentPass();
    void linesFarOutOfViewGiveUpTheirColours();
    void linesBroughtIntoViewByTheScrollBarOrAResizeAreColoured();
    void editingAWaitingLineColoursItAlone();
    void changeOfAHundredLinesIsColouredAtOnceALongerOneWaits();
    void largeChangeWaitsUntilShownAndLosesOldColours();
    void editorClosedBeforeItsFirstPaint();

    // Agreement with the reference
    void generatedProgramMatchesReference();
    void edgeNameListsMatchReference_data();
    void edgeNameListsMatchReference();
    void editedLinesMatchReference();
    void alternationSplittingTheWordBoundariesMatchesReference();
    void namesWithPatternCharactersMatchReference_data();
    void namesWithPatternCharactersMatchReference();
    void randomNamesWithPatternCharactersMatchReference();

    // The shortcuts that spare running patterns
    void parsedPatternReadsItemsGroupsAndQuantifiers();
    void parsedPatternRefusesWhatItDoesNotFollow_data();
    void parsedPatternRefusesWhatItDoesNotFollow();
    void patternStartNeverSkipsAMatch_data();
    void patternStartNeverSkipsAMatch();
    void patternStartReadsWhereMatchesBegin_data();
    void patternStartReadsWhereMatchesBegin();
    void simplePatternMatchesWherePatternDoes_data();
    void simplePatternMatchesWherePatternDoes();
};

ZuSourceCode *TestHighlight::openEditor(const QString &text)
{
    const QString name = QStringLiteral("prog%1").arg(++editorCount);
    QTextCodec *codec = QTextCodec::codecForName("windows-1251");
    if (!codec || !codec->canEncode(text))
        return nullptr;
    if (!writeFile(name + QStringLiteral(".zu"), codec->fromUnicode(text)))
        return nullptr;
    return editorOnOwnPage(name, window, pages);
}

ZuSourceCode *TestHighlight::highlighted(const QString &text, const QStringList &operations,
                                         const QStringList &types, Syntaxer **syntaxer)
{
    ZuSourceCode *editor = openEditor(text);
    if (!editor)
        return nullptr;
    auto *highlighter = new Syntaxer(editor->document(), operations, types, editor);
    highlighter->rehighlight();
    if (syntaxer)
        *syntaxer = highlighter;
    return editor;
}

QStringList TestHighlight::colours(const QString &text, const QStringList &operations,
                                   const QStringList &types)
{
    QStringList maps;
    ZuSourceCode *editor = highlighted(text, operations, types);
    if (!editor)
        return { QStringLiteral("<no editor>") };
    for (QTextBlock block = editor->document()->begin(); block.isValid(); block = block.next())
        maps << colourMap(block);
    return maps;
}

ZuSourceCode *TestHighlight::shownEditor(const QString &text, const QStringList &operations,
                                         const QStringList &types)
{
    ZuSourceCode *editor = openEditor(text);
    if (!editor)
        return nullptr;
    new Syntaxer(editor->document(), operations, types, editor);
    QWidget *page = editor->parentWidget();
    page->resize(600, 400);
    page->show();
    if (!QTest::qWaitForWindowExposed(page)
        || !QTest::qWaitFor([&] { return editor->document()->firstBlock().userState() == 0; }))
        return nullptr;
    return editor;
}

void TestHighlight::compareWithReference(const QString &text, const QStringList &operations,
                                         const QStringList &types)
{
    ZuSourceCode *editor = highlighted(text, operations, types);
    QVERIFY(editor);
    QCOMPARE(editor->toPlainText(), text);

    QTextDocument expected;
    expected.setPlainText(text);
    ReferenceSyntaxer reference(&expected, operations, types);
    reference.rehighlight();

    const QString difference = firstDifference(editor->document(), &expected);
    QVERIFY2(difference.isEmpty(), qPrintable(difference));
}

void TestHighlight::init()
{
    QVERIFY(workDir.make());
    QVERIFY(workDir.enter());
    makePlugin(plugin, window);
    QVERIFY(window);
}

void TestHighlight::cleanup()
{
    deleteWidgets(pages);
    deletePlugin(plugin, window);
    workDir.leave();
}

// ---------------------------------------------------------------------------
// The rules

void TestHighlight::ruleListHoldsNameRulesThenLastRuleAgainThenFixedRules()
{
    Syntaxer *syntaxer = nullptr;
    QVERIFY(highlighted(QStringLiteral("x"),
                        { QStringLiteral("put"), QStringLiteral("a=b"), QStringLiteral("x_y"),
                          QStringLiteral("end if") },
                        { QStringLiteral("Int"), QStringLiteral("Real") }, &syntaxer));
    const QVector<Syntaxer::HighRule> &rules = syntaxer->highRules();

    const QStringList patterns = {
        QStringLiteral("\\b(put)\\b"),
        QStringLiteral("(a=b)"),
        QStringLiteral("(x_y)"),
        QStringLiteral("\\b(end if)\\b"),
        QStringLiteral("\\b(Int)\\b"),
        QStringLiteral("\\b(Real)\\b"),
        QStringLiteral("\\b(Real)\\b"),
        QStringLiteral("\\b[-+]?(?:\\b[0-9]+(?:\\.[0-9]*)?|\\.[0-9]+\\b)(?:[eE][-+]?[0-9]+\\b)?\\b"),
        QStringLiteral("\".*\""),
        QStringLiteral("\\b[{()}]\\b"),
        QStringLiteral("``[^\n]*"),
    };
    QStringList actualPatterns;
    for (const Syntaxer::HighRule &rule : rules)
        actualPatterns << patternOf(rule);
    QCOMPARE(actualPatterns, patterns);

    struct Expected { QRgb rgb; int weight; };
    const QRgb red = 0xffff0000, blue = 0xff0000ff, green = 0xff008000, magenta = 0xffff00ff,
               grey = 0xffa0a0a4;
    const QVector<Expected> formats = {
        { red, 75 }, { red, 75 }, { red, 75 }, { red, 75 }, { blue, 50 }, { blue, 50 },
        { blue, 50 }, { blue, 50 }, { green, 50 }, { magenta, 75 }, { grey, 50 },
    };
    for (int i = 0; i < rules.size(); ++i) {
        const QTextCharFormat &format = rules.at(i).format;
        QVERIFY2(format.hasProperty(QTextFormat::ForegroundBrush), qPrintable(QString::number(i)));
        QCOMPARE(format.foreground().style(), Qt::SolidPattern);
        QCOMPARE(format.foreground().color().rgba(), formats.at(i).rgb);
        QVERIFY2(format.hasProperty(QTextFormat::FontWeight), qPrintable(QString::number(i)));
        QCOMPARE(format.fontWeight(), formats.at(i).weight);
        QCOMPARE(format.properties().size(), 2);

        const QRegExp &pattern = rules.at(i).pattern;
        QCOMPARE(pattern.patternSyntax(), QRegExp::RegExp);
        QCOMPARE(pattern.caseSensitivity(), Qt::CaseSensitive);
        QVERIFY(!pattern.isMinimal());
    }
    QVERIFY(rules.at(6).format == rules.at(5).format);
    QCOMPARE(QColor(Qt::gray).rgba(), grey);
    QCOMPARE(QColor(Qt::darkGreen).rgba(), green);
}

void TestHighlight::withoutSecondListLastFirstListRuleIsRepeated()
{
    Syntaxer *syntaxer = nullptr;
    QVERIFY(highlighted(QStringLiteral("x"), { QStringLiteral("put"), QStringLiteral("get_it") }, {},
                        &syntaxer));
    const QVector<Syntaxer::HighRule> &rules = syntaxer->highRules();
    QCOMPARE(rules.size(), 7);
    QCOMPARE(patternOf(rules.at(0)), QStringLiteral("\\b(put)\\b"));
    QCOMPARE(patternOf(rules.at(1)), QStringLiteral("(get_it)"));
    QCOMPARE(patternOf(rules.at(2)), QStringLiteral("(get_it)"));
    QVERIFY(rules.at(2).format == rules.at(1).format);
    QCOMPARE(rules.at(2).format.foreground().color().rgba(), QColor(Qt::red).rgba());
    QCOMPARE(rules.at(2).format.fontWeight(), int(QFont::Bold));
    QCOMPARE(patternOf(rules.at(3)).left(9), QStringLiteral("\\b[-+]?(?"));
}

void TestHighlight::emptyListsGiveEmptyPatternRuleAndFourFixedRules()
{
    Syntaxer *syntaxer = nullptr;
    ZuSourceCode *editor = highlighted(QStringLiteral("put 12 \"s\" f(x) `` c"), {}, {}, &syntaxer);
    QVERIFY(editor);
    const QVector<Syntaxer::HighRule> &rules = syntaxer->highRules();
    QCOMPARE(rules.size(), 5);
    QVERIFY(patternOf(rules.at(0)).isEmpty());
    QVERIFY(rules.at(0).format.properties().isEmpty());
    QCOMPARE(patternOf(rules.at(1)).left(9), QStringLiteral("\\b[-+]?(?"));
    QCOMPARE(patternOf(rules.at(2)), QStringLiteral("\".*\""));
    QCOMPARE(patternOf(rules.at(3)), QStringLiteral("\\b[{()}]\\b"));
    QCOMPARE(patternOf(rules.at(4)), QStringLiteral("``[^\n]*"));
    // The empty rule colours nothing; the fixed rules still work.
    QCOMPARE(colourMap(editor->document()->begin()), QStringLiteral("....BB.GGG..M...CCCC"));
}

void TestHighlight::everyCharacterOfTheOperatorClassDropsWordBoundaries()
{
    const QString unbounded = QStringLiteral("%|&=_/<>~'");
    const QString ordinary = QStringLiteral(":-+!#@,;\"ab");
    QStringList names;
    for (QChar ch : unbounded + ordinary)
        names << QStringLiteral("k") + ch;
    Syntaxer *syntaxer = nullptr;
    QVERIFY(highlighted(QStringLiteral("x"), names, {}, &syntaxer));
    const QVector<Syntaxer::HighRule> &rules = syntaxer->highRules();
    for (int i = 0; i < names.size(); ++i) {
        const QString expected = i < unbounded.size()
            ? QStringLiteral("(") + names.at(i) + QStringLiteral(")")
            : QStringLiteral("\\b(") + names.at(i) + QStringLiteral(")\\b");
        QCOMPARE(patternOf(rules.at(i)), expected);
    }
}

void TestHighlight::listsChangedAfterConstructionChangeNothing()
{
    ZuSourceCode *editor = openEditor(QStringLiteral("put get"));
    QVERIFY(editor);
    QStringList operations { QStringLiteral("put") };
    QStringList types;
    auto *syntaxer = new Syntaxer(editor->document(), operations, types, editor);
    operations << QStringLiteral("get");
    types << QStringLiteral("put");
    syntaxer->rehighlight();
    QCOMPARE(syntaxer->highRules().size(), 6);
    QCOMPARE(colourMap(editor->document()->begin()), QStringLiteral("RRR...."));
}

void TestHighlight::attachesToTheDocumentUnderTheGivenParent()
{
    ZuSourceCode *editor = openEditor(QStringLiteral("put 1\nx"));
    QVERIFY(editor);
    auto *syntaxer = new Syntaxer(editor->document(), { QStringLiteral("put") }, {}, editor);
    QCOMPARE(syntaxer->parent(), editor);
    QCOMPARE(syntaxer->document(), editor->document());
    // An attached document is coloured without being asked, once shown.
    editor->parentWidget()->show();
    QTRY_COMPARE(colourMap(editor->document()->begin()), QStringLiteral("RRR.B"));
}

// The highlighter needs a document only, not an editor around it.
void TestHighlight::highlightsADocumentWithoutAnEditor()
{
    QTextDocument document;
    document.setPlainText(QStringLiteral("put 1\nInt x"));
    Syntaxer syntaxer(&document, { QStringLiteral("put") }, { QStringLiteral("Int") });
    QVERIFY(!syntaxer.parent());
    QCOMPARE(syntaxer.document(), &document);
    syntaxer.rehighlight();
    QCOMPARE(colourMap(document.begin()), QStringLiteral("RRR.B"));
    QCOMPARE(colourMap(document.lastBlock()), QStringLiteral("BBB.."));
}

// ---------------------------------------------------------------------------
// Colours

void TestHighlight::plainFirstListNameIsRedBoldOnlyAsWholeWord()
{
    QCOMPARE(colours(QStringLiteral("put output putter put;(put) _put"), { QStringLiteral("put") }, {}),
             QStringList { QStringLiteral("RRR...............RRR..RRR......") });
    QCOMPARE(colours(u("вывод выводить вывод1 (вывод)"), { u("вывод") }, {}),
             QStringList { QStringLiteral("RRRRR..................RRRRR.") });
}

void TestHighlight::firstListNameWithEqualsOrUnderscoreIsRedBoldInsideWords()
{
    QCOMPARE(colours(QStringLiteral("x==y myget_values get_value"),
                     { QStringLiteral("=="), QStringLiteral("get_value") }, {}),
             QStringList { QStringLiteral(".RR....RRRRRRRRR..RRRRRRRRR") });
    QCOMPARE(colours(QStringLiteral("ab=c xab=cx ab= c"), { QStringLiteral("ab=") }, {}),
             QStringList { QStringLiteral("RRR...RRR...RRR..") });
}

void TestHighlight::secondListNameIsBlueOnlyAsWholeWord()
{
    QCOMPARE(colours(QStringLiteral("Int Integer myInt Int; big_int mybig_int"), {},
                     { QStringLiteral("Int"), QStringLiteral("big_int") }),
             QStringList { QStringLiteral("BBB...............BBB..BBBBBBB..........") });
}

void TestHighlight::nameInBothListsIsBlueNormal()
{
    QCOMPARE(colours(QStringLiteral("val x_y ax_y"), { QStringLiteral("val"), QStringLiteral("x_y") },
                     { QStringLiteral("val"), QStringLiteral("x_y") }),
             QStringList { QStringLiteral("BBB.BBB..RRR") });
}

void TestHighlight::numbersAreBlueFromTheirLeadingWordBoundary()
{
    // A sign or point after a blank is outside the leading word boundary;
    // after a letter it is inside.
    QCOMPARE(colours(QStringLiteral("12 -3.5 .5e-3 a-3 1e10"), {}, {}),
             QStringList { QStringLiteral("BB..BBB..BBBB..BB.BBBB") });
    QCOMPARE(colours(QStringLiteral("(12)"), {}, {}), QStringList { QStringLiteral(".BB.") });
}

void TestHighlight::digitsInsideIdentifiersAreNotNumbers()
{
    QCOMPARE(colours(QStringLiteral("x1 y2z 1x = 1"), {}, {}),
             QStringList { QStringLiteral("............B") });
}

void TestHighlight::joinedStringsAreGreenFromFirstToLastQuote()
{
    QCOMPARE(colours(QStringLiteral("s := \"ab\" + \"cd\";"), {}, {}),
             QStringList { QStringLiteral(".....GGGGGGGGGGG.") });
    QCOMPARE(colours(QStringLiteral("one \" quote"), {}, {}),
             QStringList { QStringLiteral("...........") });
}

void TestHighlight::openingParenthesisBetweenWordsIsMagentaBold()
{
    QCOMPARE(colours(QStringLiteral("f(x) g (y) {z} a{b}c"), {}, {}),
             QStringList { QStringLiteral(".M..............M.M.") });
}

void TestHighlight::textAfterTwoBackticksIsGreyOverridingEarlierColours()
{
    const QString line = QStringLiteral("put 12 `` put \"s\" f(x) Int a_b 7");
    QCOMPARE(colours(line, { QStringLiteral("put"), QStringLiteral("a_b") }, { QStringLiteral("Int") }),
             QStringList { QStringLiteral("RRR.BB.") + QString(line.size() - 7, QLatin1Char('C')) });
}

void TestHighlight::singleBacktickIsGreyOnItsOwn()
{
    // Each backtick on its own; what stands between two keeps its colours.
    QCOMPARE(colours(QStringLiteral("put `put` 12 `\nx := `y\n`"), { QStringLiteral("put") }, {}),
             QStringList({ QStringLiteral("RRR.CRRRC.BB.C"), QStringLiteral(".....C."),
                           QStringLiteral("C") }));
}

void TestHighlight::laterRulesOverwriteEarlierOnes()
{
    // The string runs to the quote inside the comment: the number and the
    // name inside it are green, the comment with its quotes and name grey.
    QCOMPARE(colours(QStringLiteral("\"12 put\" 7 `` \"put\" 8"), { QStringLiteral("put") }, {}),
             QStringList { QStringLiteral("GGGGGGGGGGGCCCCCCCCCC") });
    // A name that is a whole word inside a string is green as well.
    QCOMPARE(colours(QStringLiteral("put \"put\" put"), { QStringLiteral("put") }, {}),
             QStringList { QStringLiteral("RRR.GGGGG.RRR") });
}

void TestHighlight::blockStateIsZeroAfterHighlighting()
{
    const QString text = QStringLiteral("a `b\n`\n``c\n\nx := 1\n`` `\n\"`\" `");
    ZuSourceCode *editor = openEditor(text);
    QVERIFY(editor);
    QTextDocument *document = editor->document();
    for (QTextBlock block = document->begin(); block.isValid(); block = block.next())
        QCOMPARE(block.userState(), -1);

    auto *syntaxer = new Syntaxer(document, { QStringLiteral("a") }, {}, editor);
    syntaxer->rehighlight();
    QCOMPARE(document->blockCount(), 7);
    for (QTextBlock block = document->begin(); block.isValid(); block = block.next())
        QCOMPARE(block.userState(), 0);
    QCOMPARE(colourMap(document->findBlockByNumber(0)), QStringLiteral("R.C."));
    QCOMPARE(colourMap(document->findBlockByNumber(6)), QStringLiteral("GCG.C"));
}

// "put 12 " over and over, cut to the length.
static QString repeatedLine(int length)
{
    const QString unit = QStringLiteral("put 12 ");
    return unit.repeated(length / unit.size() + 1).left(length);
}

static QString repeatedColours(int length)
{
    return QStringLiteral("RRR.BB.").repeated(length / 7 + 1).left(length);
}

void TestHighlight::longLineLeftUnhighlighted()
{
    // The long line is uncoloured even inside a comment, and ends it. The
    // editor shows a line this long in pieces as it loads it, but a pasted
    // one stays one block.
    const QString text = QStringLiteral("`\n") + repeatedLine(10001) + QStringLiteral("\nput 12\n")
        + repeatedLine(10000);
    const QStringList operations = { QStringLiteral("put") };
    QTextDocument document;
    document.setPlainText(text);
    Syntaxer syntaxer(&document, operations, {});
    syntaxer.rehighlight();
    QStringList maps;
    for (QTextBlock block = document.begin(); block.isValid(); block = block.next())
        maps << colourMap(block);
    QCOMPARE(maps, QStringList({ QStringLiteral("C"), QString(10001, QLatin1Char('.')),
                                 QStringLiteral("RRR.BB"), repeatedColours(10000) }));

    QTextDocument expected;
    expected.setPlainText(text);
    ReferenceSyntaxer reference(&expected, operations, {});
    reference.rehighlight();
    const QString difference = firstDifference(&document, &expected);
    QVERIFY2(difference.isEmpty(), qPrintable(difference));
}

void TestHighlight::lineGrowingPastTheLimitLosesItsColours()
{
    ZuSourceCode *editor = highlighted(repeatedLine(10000), { QStringLiteral("put") }, {});
    QVERIFY(editor);
    const QTextBlock line = editor->document()->firstBlock();
    QCOMPARE(colourMap(line), repeatedColours(10000));

    QTextCursor cursor(editor->document());
    cursor.movePosition(QTextCursor::End);
    cursor.insertText(QStringLiteral("2"));
    QCOMPARE(colourMap(line), QString(10001, QLatin1Char('.')));
    cursor.deletePreviousChar();
    QCOMPARE(colourMap(line), repeatedColours(10000));
}

// ---------------------------------------------------------------------------
// Colouring as the editor shows its lines

namespace {

// The document holding the text, coloured whole by the reference, which it
// keeps: a highlighter takes its colours with it.
std::unique_ptr<QTextDocument> referenceDocument(const QString &text, const QStringList &operations,
                                                 const QStringList &types)
{
    auto document = std::make_unique<QTextDocument>();
    document->setDocumentLayout(new QPlainTextDocumentLayout(document.get()));
    document->setPlainText(text);
    (new ReferenceSyntaxer(document.get(), operations, types))->rehighlight();
    return document;
}

int colouredBlocks(const QTextDocument *document)
{
    int coloured = 0;
    for (QTextBlock block = document->begin(); block.isValid(); block = block.next())
        coloured += block.userState() == 0;
    return coloured;
}

} // namespace

void TestHighlight::editorNotShownColoursNothing()
{
    ZuSourceCode *editor = openEditor(QStringLiteral("put 1\nput 2\n"));
    QVERIFY(editor);
    new Syntaxer(editor->document(), { QStringLiteral("put") }, {}, editor);
    QCoreApplication::processEvents();
    QCOMPARE(colouredBlocks(editor->document()), 0);

    editor->parentWidget()->show();
    QVERIFY(QTest::qWaitForWindowExposed(editor->parentWidget()));
    QTRY_COMPARE(colouredBlocks(editor->document()), 3);
    QCOMPARE(colourMap(editor->document()->firstBlock()), QStringLiteral("RRR.B"));
}

// A program of megabytes is not coloured whole when it opens, nor does it
// keep a text layout for each line.
void TestHighlight::openedProgramColoursOnlyTheLinesShown()
{
    const ZuSample sample = makeZuSample(2024, 3000, 200, 60);
    ZuSourceCode *editor = shownEditor(sample.text(), sample.operations, sample.types);
    QVERIFY(editor);
    QCoreApplication::processEvents();
    const QTextDocument *document = editor->document();
    const QTextBlock lastShown = shownBlocks(editor).second;
    QVERIFY(lastShown.blockNumber() > 5);
    QCOMPARE(colouredBlocks(document), lastShown.blockNumber() + 1);

    const auto expected = referenceDocument(sample.text(), sample.operations, sample.types);
    for (QTextBlock block = document->begin(); block != lastShown.next(); block = block.next())
        QCOMPARE(colourMap(block), colourMap(expected->findBlockByNumber(block.blockNumber())));
    QCOMPARE(document->findBlockByNumber(2000).userState(), -1);
    QVERIFY(document->findBlockByNumber(2000).layout()->formats().isEmpty());
}

// Each line is coloured as it comes into view, with exactly the colours of
// colouring the whole document.
void TestHighlight::pagingThroughGivesTheColoursOfAWholeDocumentPass()
{
    const ZuSample sample = makeZuSample(12345);
    ZuSourceCode *editor = shownEditor(sample.text(), sample.operations, sample.types);
    QVERIFY(editor);
    QTextDocument *document = editor->document();
    QCOMPARE(document->blockCount(), 10001);
    QVERIFY(colouredBlocks(document) < 100);
    const auto expected = referenceDocument(sample.text(), sample.operations, sample.types);

    int compared = 0;
    for (;;) {
        QTRY_VERIFY(shownBlocksColoured(editor));
        const auto [first, last] = shownBlocks(editor);
        // Pages overlap by a line or so: each block is counted once.
        for (QTextBlock block = document->findBlockByNumber(qMax(first.blockNumber(), compared));
             block != last.next(); block = block.next(), ++compared) {
            const QTextBlock reference = expected->findBlockByNumber(block.blockNumber());
            QCOMPARE(block.userState(), 0);
            QCOMPARE(colourMap(block), colourMap(reference));
            QVERIFY(block.layout()->formats() == reference.layout()->formats());
        }
        if (editor->textCursor().block() == document->lastBlock())
            break;
        QTest::keyClick(editor, Qt::Key_PageDown);
    }
    QCOMPARE(compared, document->blockCount());
}

// Lines shown once and scrolled far away give up their colours and their
// layouts, and get them again when they come back into view.
void TestHighlight::linesFarOutOfViewGiveUpTheirColours()
{
    const ZuSample sample = makeZuSample(12345);
    ZuSourceCode *editor = shownEditor(sample.text(), sample.operations, sample.types);
    QVERIFY(editor);
    QTextDocument *document = editor->document();
    const QTextBlock top = document->firstBlock();
    const QString topColours = colourMap(top);
    QVERIFY(topColours.contains(QLatin1Char('R')) || topColours.contains(QLatin1Char('B')));

    QScrollBar *scrollBar = editor->verticalScrollBar();
    for (int value = 0; value <= scrollBar->maximum(); value += scrollBar->pageStep()) {
        scrollBar->setValue(value);
        QCoreApplication::processEvents();
    }
    QTRY_COMPARE(document->lastBlock().userState(), 0);
    QVERIFY2(colouredBlocks(document) <= ViewColouring::keptBlocks + 100,
             qPrintable(QString::number(colouredBlocks(document))));
    QCOMPARE(top.userState(), -1);
    QVERIFY(top.layout()->formats().isEmpty());

    scrollBar->setValue(0);
    QTRY_COMPARE(top.userState(), 0);
    QCOMPARE(colourMap(top), topColours);
}

// The scroll bar moves the view without the cursor, and a taller editor
// shows more lines: either way the lines that come into view are coloured.
void TestHighlight::linesBroughtIntoViewByTheScrollBarOrAResizeAreColoured()
{
    const ZuSample sample = makeZuSample(404, 3000, 200, 60);
    ZuSourceCode *editor = shownEditor(sample.text(), sample.operations, sample.types);
    QVERIFY(editor);
    const QTextDocument *document = editor->document();
    const QTextBlock middle = document->findBlockByNumber(1500);
    QCOMPARE(middle.userState(), -1);

    QScrollBar *scrollBar = editor->verticalScrollBar();
    scrollBar->setValue(1500);
    QTRY_COMPARE(middle.userState(), 0);
    QCOMPARE(editor->textCursor().blockNumber(), 0);
    const QTextBlock below = shownBlocks(editor).second.next().next();
    QCOMPARE(below.userState(), -1);

    editor->parentWidget()->resize(600, 800);
    QTRY_COMPARE(below.userState(), 0);
    const auto expected = referenceDocument(sample.text(), sample.operations, sample.types);
    QCOMPARE(colourMap(below), colourMap(expected->findBlockByNumber(below.blockNumber())));
    QCOMPARE(colourMap(middle), colourMap(expected->findBlockByNumber(1500)));
}

// An edit of a line out of view colours that line at once, and the lines
// below it still wait: colouring one does not run on through the others.
void TestHighlight::editingAWaitingLineColoursItAlone()
{
    const ZuSample sample = makeZuSample(77, 3000, 200, 60);
    ZuSourceCode *editor = shownEditor(sample.text(), sample.operations, sample.types);
    QVERIFY(editor);
    QTextDocument *document = editor->document();
    const int coloured = colouredBlocks(document);
    QCOMPARE(document->findBlockByNumber(2000).userState(), -1);

    QTextCursor cursor(document->findBlockByNumber(2000));
    cursor.insertText(sample.operations.first() + QLatin1Char(' '));
    QTextBlock edited = document->findBlockByNumber(2000);
    QCOMPARE(edited.userState(), 0);
    QCOMPARE(edited.next().userState(), -1);
    QCOMPARE(colouredBlocks(document), coloured + 1);

    const auto expected = referenceDocument(document->toPlainText(), sample.operations, sample.types);
    QCOMPARE(colourMap(edited), colourMap(expected->findBlockByNumber(2000)));
    QVERIFY(colourMap(edited).startsWith(QStringLiteral("R")));

    // Typing where the user is colours as it always did.
    const QString before = colourMap(document->firstBlock());
    QTest::keyClicks(editor, sample.types.first() + QLatin1Char(' '));
    const auto typed = referenceDocument(document->toPlainText(), sample.operations, sample.types);
    QVERIFY(colourMap(document->firstBlock()) != before);
    QCOMPARE(colourMap(document->firstBlock()), colourMap(typed->firstBlock()));
}

// An editor that is not shown paints nothing: what it colours, the change
// coloured at once.
void TestHighlight::changeOfAHundredLinesIsColouredAtOnceALongerOneWaits()
{
    ZuSourceCode *editor = openEditor(QStringLiteral("x\n"));
    QVERIFY(editor);
    new Syntaxer(editor->document(), { QStringLiteral("put") }, {}, editor);
    QTextDocument *document = editor->document();
    const int lines = ViewColouring::immediateBlocks;

    // The first line and the 99 new ones below it: 100 lines.
    QTextCursor cursor(document->firstBlock());
    cursor.insertText(QStringLiteral("put\n").repeated(lines - 1));
    QCOMPARE(colouredBlocks(document), lines);
    QCOMPARE(colourMap(document->findBlockByNumber(lines - 2)), QStringLiteral("RRR"));

    // 101 lines.
    cursor.setPosition(0);
    cursor.insertText(QStringLiteral("put\n").repeated(lines));
    QCOMPARE(document->blockCount(), 2 * lines + 1);
    QCOMPARE(colouredBlocks(document), lines - 1);
    QCOMPARE(document->firstBlock().userState(), -1);
    QCOMPARE(colourMap(document->firstBlock()), QStringLiteral("..."));
}

// A change of many lines, such as replacing all the text, colours what is in
// view and leaves the rest waiting, without the colours of its old text.
void TestHighlight::largeChangeWaitsUntilShownAndLosesOldColours()
{
    const ZuSample sample = makeZuSample(31, 3000, 200, 60);
    ZuSourceCode *editor = shownEditor(sample.text(), sample.operations, sample.types);
    QVERIFY(editor);
    QTextDocument *document = editor->document();
    // Shown once, a line far down keeps its colours.
    QTest::keyClick(editor, Qt::Key_End, Qt::ControlModifier);
    QTRY_COMPARE(document->lastBlock().previous().userState(), 0);
    QVERIFY(!document->lastBlock().previous().layout()->formats().isEmpty());
    QTest::keyClick(editor, Qt::Key_Home, Qt::ControlModifier);

    QRandomGenerator random(5);
    const QString text = makeZuLines(random, 3000, sample.operations, sample.types)
                             .join(QLatin1Char('\n')) + QLatin1Char('\n');
    QTextCursor cursor(document);
    cursor.select(QTextCursor::Document);
    cursor.insertText(text);
    QCOMPARE(document->blockCount(), 3001);
    QCOMPARE(document->lastBlock().previous().userState(), -1);
    QVERIFY(document->lastBlock().previous().layout()->formats().isEmpty());

    QTRY_COMPARE(document->firstBlock().userState(), 0);
    const auto expected = referenceDocument(text, sample.operations, sample.types);
    QCOMPARE(colourMap(document->firstBlock()), colourMap(expected->firstBlock()));
    QVERIFY(colouredBlocks(document) < 100);
}

void TestHighlight::editorClosedBeforeItsFirstPaint()
{
    const ZuSample sample = makeZuSample(8, 3000, 200, 60);
    ZuSourceCode *editor = openEditor(sample.text());
    QVERIFY(editor);
    QPointer<Syntaxer> syntaxer = new Syntaxer(editor->document(), sample.operations, sample.types, editor);
    QWidget *page = editor->parentWidget();
    page->show();
    delete page;
    QCoreApplication::processEvents();
    QVERIFY(!syntaxer);
}

// ---------------------------------------------------------------------------
// Agreement with the reference

void TestHighlight::generatedProgramMatchesReference()
{
    const ZuSample sample = makeZuSample(12345);
    QCOMPARE(sample.lines.size(), 10000);
    QCOMPARE(sample.operations.size(), 1000);
    QCOMPARE(sample.types.size(), 300);
    const QString text = sample.text();

    ZuSourceCode *editor = highlighted(text, sample.operations, sample.types);
    QVERIFY(editor);
    QCOMPARE(editor->toPlainText(), text);

    QTextDocument expected;
    expected.setPlainText(text);
    ReferenceSyntaxer reference(&expected, sample.operations, sample.types);
    reference.rehighlight();
    QCOMPARE(reference.rules().size(), 1000 + 300 + 1 + 4);

    const QString difference = firstDifference(editor->document(), &expected);
    QVERIFY2(difference.isEmpty(), qPrintable(difference));

    // The sample must exercise every colour on many lines.
    QHash<QChar, int> linesWith;
    for (QTextBlock block = editor->document()->begin(); block.isValid(); block = block.next()) {
        const QString map = colourMap(block);
        for (QChar letter : QStringLiteral("RBGMC?")) {
            if (map.contains(letter))
                ++linesWith[letter];
        }
    }
    QVERIFY2(linesWith.value(QLatin1Char('R')) > 5000, qPrintable(QString::number(linesWith.value(QLatin1Char('R')))));
    QVERIFY2(linesWith.value(QLatin1Char('B')) > 3000, qPrintable(QString::number(linesWith.value(QLatin1Char('B')))));
    QVERIFY2(linesWith.value(QLatin1Char('G')) > 500, qPrintable(QString::number(linesWith.value(QLatin1Char('G')))));
    QVERIFY2(linesWith.value(QLatin1Char('M')) > 300, qPrintable(QString::number(linesWith.value(QLatin1Char('M')))));
    QVERIFY2(linesWith.value(QLatin1Char('C')) > 1000, qPrintable(QString::number(linesWith.value(QLatin1Char('C')))));
    QCOMPARE(linesWith.value(QLatin1Char('?')), 0);
}

void TestHighlight::edgeNameListsMatchReference_data()
{
    QTest::addColumn<QStringList>("operations");
    QTest::addColumn<QStringList>("types");

    const QStringList invalid = { QStringLiteral("("), QStringLiteral("["), QStringLiteral("a\\"),
                                  QStringLiteral("*x") };
    const QStringList empty = { QStringLiteral("a*"), QStringLiteral("()"), QStringLiteral("x?"),
                                QString() };
    const QStringList edges = { QStringLiteral("end if"), QStringLiteral("<x"), QStringLiteral("y>"),
                                QStringLiteral(" "), QStringLiteral("x "), QStringLiteral("-"),
                                QStringLiteral("a-b"), QStringLiteral(":="), u("конец если") };
    // Patterns that match almost anywhere.
    const QStringList wide = { QStringLiteral("."), QStringLiteral("\\w+"), QStringLiteral("\\d"),
                               QStringLiteral("n.*"), QStringLiteral("d{2}"), QStringLiteral("z{1,2}"),
                               QStringLiteral("y?y"), QStringLiteral("^s"), QStringLiteral("e$"),
                               QStringLiteral("a|"), QStringLiteral("|b"), QStringLiteral("f\\("),
                               QStringLiteral("[^ ]"), QStringLiteral("\\b") };
    const QStringList words = { QStringLiteral("put"), QStringLiteral("x"), QStringLiteral("get_it"),
                                u("вывод") };

    QTest::newRow("both lists empty") << QStringList() << QStringList();
    QTest::newRow("first list only") << words + edges << QStringList();
    QTest::newRow("second list only") << QStringList() << words + edges;
    QTest::newRow("invalid patterns first") << invalid + words << QStringList { QStringLiteral("Int") };
    QTest::newRow("invalid patterns last") << words << words + invalid;
    QTest::newRow("empty matches first") << empty + words << QStringList { QStringLiteral("Int") };
    QTest::newRow("empty matches last") << words << words + empty;
    QTest::newRow("empty name only") << QStringList { QString() } << QStringList();
    QTest::newRow("blanks and non-word ends") << edges << edges;
    QTest::newRow("wide patterns") << wide + words << words + wide;
    QTest::newRow("everything in both lists")
        << invalid + empty + edges + wide + words << words + edges + wide + empty + invalid;
}

void TestHighlight::edgeNameListsMatchReference()
{
    QFETCH(QStringList, operations);
    QFETCH(QStringList, types);

    QRandomGenerator random(777);
    QStringList lines = makeZuLines(random, 1500, operations, types);
    // Every name on its own, inside a word and between punctuation.
    for (const QString &name : operations + types) {
        lines << name << QStringLiteral("a") + name + QStringLiteral("b")
              << QStringLiteral("(") + name + QStringLiteral(") ") + name + QStringLiteral("; ") + name
              << name + name + QStringLiteral(" `") + name + QStringLiteral("` `` ") + name;
    }
    compareWithReference(lines.join(QLatin1Char('\n')), operations, types);
}

void TestHighlight::editedLinesMatchReference()
{
    const ZuSample sample = makeZuSample(54321, 600, 200, 60);
    const QString text = sample.text();
    ZuSourceCode *editor = highlighted(text, sample.operations, sample.types);
    QVERIFY(editor);
    // A document reports its changes only once it has a layout.
    QTextDocument expected;
    expected.setDocumentLayout(new QPlainTextDocumentLayout(&expected));
    expected.setPlainText(text);
    ReferenceSyntaxer reference(&expected, sample.operations, sample.types);
    reference.rehighlight();
    const QString before = firstDifference(editor->document(), &expected);
    QVERIFY2(before.isEmpty(), qPrintable(before));

    // The same edits on both documents: each highlighter colours the lines
    // the edits touch.
    QRandomGenerator random(99);
    const QStringList inserts = makeZuLines(random, 300, sample.operations, sample.types);
    for (int i = 0; i < inserts.size(); ++i) {
        QTextDocument *documents[] = { editor->document(), &expected };
        const int blockNumber = random.bounded(editor->document()->blockCount());
        const QTextBlock block = editor->document()->findBlockByNumber(blockNumber);
        const int offset = random.bounded(block.length());
        const int removed = qMin(random.bounded(4), block.length() - 1 - offset);
        QString insert = inserts.at(i).trimmed().left(1 + random.bounded(12));
        if (i % 10 == 0)
            insert += QLatin1Char('\n');
        for (QTextDocument *document : documents) {
            QTextCursor cursor(document->findBlockByNumber(blockNumber));
            cursor.setPosition(cursor.position() + offset);
            cursor.setPosition(cursor.position() + removed, QTextCursor::KeepAnchor);
            cursor.insertText(insert);
        }
    }
    QVERIFY(editor->toPlainText() != text);
    QCOMPARE(editor->toPlainText(), expected.toPlainText());
    const QString difference = firstDifference(editor->document(), &expected);
    QVERIFY2(difference.isEmpty(), qPrintable(difference));
}

// "x)|(y" makes the rule "\b(x)|(y)\b": an x after a word boundary or a y
// before one, also inside words.
void TestHighlight::alternationSplittingTheWordBoundariesMatchesReference()
{
    const QString line = QStringLiteral("y yy xy y x");
    const QStringList types { QStringLiteral("x)|(y") };
    compareWithReference(line, {}, types);
    QCOMPARE(colours(line, {}, types), QStringList { QStringLiteral("B..B.BB.B.B") });
}

void TestHighlight::namesWithPatternCharactersMatchReference_data()
{
    QTest::addColumn<QStringList>("operations");
    QTest::addColumn<QStringList>("types");

    auto row = [](const char *name, const QStringList &operations, const QStringList &types) {
        QTest::newRow(name) << operations << types;
    };
    row("opening parenthesis unclosed", { QStringLiteral("(x"), QStringLiteral("x(y") },
        { QStringLiteral("x(y"), QStringLiteral("(") });
    row("closing parenthesis unopened", { QStringLiteral(")x"), QStringLiteral("x)y") },
        { QStringLiteral("x)"), QStringLiteral(")") });
    row("alternation between the boundaries", { QStringLiteral("x)|(y") },
        { QStringLiteral("x)|(y"), QStringLiteral("x)|(y)|(0") });
    row("alternation at the start or the end", { QStringLiteral("|x"), QStringLiteral("y|") },
        { QStringLiteral("x)|("), QStringLiteral(")|(y"), QStringLiteral("|x"), QStringLiteral("x|") });
    row("alternation around non-word characters", { QStringLiteral(")|(\\.") },
        { QStringLiteral(")|(\\."), QStringLiteral("\\.)|(y"), QStringLiteral(")|(\\.x") });
    row("empty alternatives", { QStringLiteral("x||y") },
        { QStringLiteral("|"), QStringLiteral(")|("), QStringLiteral("x)|()|(y"), QStringLiteral("x||y") });
    row("class unclosed", { QStringLiteral("[x") },
        { QStringLiteral("[x"), QStringLiteral("x[y"), QStringLiteral("[") });
    row("class closing alone", { QStringLiteral("]x") },
        { QStringLiteral("x]"), QStringLiteral("]"), QStringLiteral("[]x]"), QStringLiteral("[^]x]") });
    row("backslash at the end", { QStringLiteral("x\\") },
        { QStringLiteral("x\\"), QStringLiteral("\\"), QStringLiteral("x\\\\") });
    row("quantifier first", { QStringLiteral("*x"), QStringLiteral("+x") },
        { QStringLiteral("?x"), QStringLiteral("*"), QStringLiteral("x|*y"), QStringLiteral("x)|(+y") });
    row("braces", { QStringLiteral("x{2}"), QStringLiteral("{x") },
        { QStringLiteral("x{"), QStringLiteral("x{}"), QStringLiteral("x{,2}"), QStringLiteral("x{1,}"),
          QStringLiteral("}"), QStringLiteral("{"), QStringLiteral("x{ 1}"), QStringLiteral("x{2}{3}") });
    row("anchors", { QStringLiteral("^x"), QStringLiteral("x$") },
        { QStringLiteral("^"), QStringLiteral("$"), QStringLiteral("x^"), QStringLiteral("$x"),
          QStringLiteral("x)|(^y"), QStringLiteral("^*x"), QStringLiteral("x)|$|(y") });
    row("any character", { QStringLiteral(".x") },
        { QStringLiteral("."), QStringLiteral("x."), QStringLiteral("..."), QStringLiteral("x)|(.") });
    row("word boundary tests inside", { QStringLiteral("\\bx") },
        { QStringLiteral("x)\\b|(y"), QStringLiteral("\\B)|(x"), QStringLiteral("x)|\\B(y"),
          QStringLiteral("\\b?x"), QStringLiteral("(\\bx)+") });
    row("operation names without boundaries",
        { QStringLiteral("%)|(x"), QStringLiteral("=|"), QStringLiteral("|_"), QStringLiteral("(%"),
          QStringLiteral("_)"), QStringLiteral("[="), QStringLiteral("%\\"), QStringLiteral("*="),
          QStringLiteral("x{2}%"), QStringLiteral("^%"), QStringLiteral("%$"), QStringLiteral(".="),
          QStringLiteral("%)|("), QStringLiteral(")|(%"), QStringLiteral("\\b%)|(y"),
          QStringLiteral("x)\\b|(_") },
        { QStringLiteral("x") });
    row("operation names between boundaries and not",
        { QStringLiteral("x)|(y"), QStringLiteral("y)|(=") }, { QStringLiteral("y)|(x") });
}

// A name is pasted into its rule's pattern as it is: what the pattern then
// means, the highlighter must colour as the reference does.
void TestHighlight::namesWithPatternCharactersMatchReference()
{
    QFETCH(QStringList, operations);
    QFETCH(QStringList, types);
    const QStringList lines = QStringList {
        QStringLiteral("y yy xy y x"), QStringLiteral("x(y x)y (x) [x] x[y x] x\\ \\x \\\\"),
        QStringLiteral("*x +x ?x x* x+ x? xx*"), QStringLiteral("x{2} xx{ {x} xxx x{} x{1,}"),
        QStringLiteral("^x x^ x$ $x ^ $"), QStringLiteral(". x. .x ... a.b .y"),
        QStringLiteral("| x||y || |x| x|y"), QStringLiteral("%x =y _ x%y a=b %) (= x_y")
    } + linesAround(operations + types);
    const QString difference = differenceFromReference(lines, operations, types);
    QVERIFY2(difference.isEmpty(), qPrintable(difference));
}

// Random small name lists of letters, digits, blanks and pattern
// characters, on lines of the same characters and of the names themselves.
// The seed is fixed: a failure names the lists and the line.
void TestHighlight::randomNamesWithPatternCharactersMatchReference()
{
    // Names are made of pieces: characters, letters more often so that many
    // names make valid patterns, and a few runs that give patterns a shape.
    const QStringList pieces = {
        QStringLiteral("x"), QStringLiteral("y"), QStringLiteral("x"), QStringLiteral("y"),
        QStringLiteral("a"), QStringLiteral("0"), QStringLiteral(" "), QStringLiteral("("),
        QStringLiteral(")"), QStringLiteral("|"), QStringLiteral("["), QStringLiteral("]"),
        QStringLiteral("\\"), QStringLiteral("*"), QStringLiteral("+"), QStringLiteral("?"),
        QStringLiteral("."), QStringLiteral("{"), QStringLiteral("}"), QStringLiteral("^"),
        QStringLiteral("$"), QStringLiteral("%"), QStringLiteral("="), QStringLiteral("_"),
        QStringLiteral("\""), QStringLiteral("`"), QStringLiteral(")|("), QStringLiteral("{2}"),
        QStringLiteral("\\b"), QStringLiteral("\\.")
    };
    QRandomGenerator random(20240611);
    auto randomText = [&](int maximum) {
        QString text;
        const int count = int(random.bounded(maximum + 1));
        for (int i = 0; i < count; ++i)
            text += pieces.at(int(random.bounded(pieces.size())));
        return text;
    };
    auto randomNames = [&](int maximum) {
        QStringList names;
        const int count = int(random.bounded(maximum + 1));
        for (int i = 0; i < count; ++i)
            names << randomText(4);
        return names;
    };
    const QRegExp patternChar(QStringLiteral("[\\\\^$.|?*+()[\\]{}]"));

    int patternNameMatches = 0;
    for (int table = 0; table < 4000; ++table) {
        const QStringList operations = randomNames(3);
        const QStringList types = randomNames(2);
        const QStringList names = operations + types;
        QStringList lines;
        for (int i = 0; i < 4; ++i) {
            QString line;
            for (int part = 0; part < 4; ++part) {
                line += !names.isEmpty() && random.bounded(2) ? names.at(int(random.bounded(names.size())))
                                                              : randomText(3);
            }
            lines << line;
        }
        const QString difference = differenceFromReference(lines, operations, types);
        QVERIFY2(difference.isEmpty(), qPrintable(difference));

        // How often a name with pattern characters colours something: the
        // reference's rules are all that is needed here.
        QTextDocument noText;
        const ReferenceSyntaxer reference(&noText, operations, types);
        for (int i = 0; i < names.size(); ++i) {
            const QRegExp &pattern = reference.rules().at(i).pattern;
            if (!names.at(i).contains(patternChar))
                continue;
            for (const QString &line : qAsConst(lines)) {
                if (pattern.indexIn(line) >= 0 && pattern.matchedLength() > 0)
                    ++patternNameMatches;
            }
        }
    }
    // The tables must often hold names that change their patterns and match.
    QVERIFY2(patternNameMatches > 1000, qPrintable(QString::number(patternNameMatches)));
}

// Patterns of the kinds the rules are made of, and texts made of the
// characters they look for, so that matches are frequent.
static QStringList shortcutPatterns()
{
    return { QStringLiteral("\\b(a.b)\\b"), QStringLiteral("(p|q)"), QStringLiteral("\\b([y])\\b"),
             QStringLiteral("\\b((z))\\b"), QStringLiteral("\\b([a-c]x)\\b"), QStringLiteral("\\b(q\\.r)\\b"),
             QStringLiteral("((v)_)"), QStringLiteral("\\b(x+)\\b"), QStringLiteral("\\b(m*)\\b"),
             QStringLiteral("\\b(k?)\\b"), QStringLiteral("(||)"), QStringLiteral("(a+b)"),
             QStringLiteral("\\b[-+]?(?:\\b[0-9]+(?:\\.[0-9]*)?|\\.[0-9]+\\b)(?:[eE][-+]?[0-9]+\\b)?\\b"),
             QStringLiteral("\".*\""), QStringLiteral("\\b[{()}]\\b"), QStringLiteral("``[^\n]*"),
             QStringLiteral("\\b(\\w+)\\b"), QStringLiteral("\\b([^a]b)\\b"), QStringLiteral("\\B(x)"),
             QStringLiteral("^(a)"), QStringLiteral("(a)$"), QStringLiteral("\\b(.)\\b"),
             QStringLiteral("\\b(ж[а-я])\\b"), QStringLiteral("\\b(x)|(y)\\b"),
             QStringLiteral("\\b()|(\\.)\\b"), QStringLiteral("\\b(x)|\\B()") };
}

static QStringList shortcutTexts()
{
    QRandomGenerator random(4242);
    const QString alphabet = QStringLiteral("abxyzpqrvmk_.+-=|{}()\"` 0123456789eEжзя\t");
    QStringList texts { QString(), QStringLiteral(" "), QStringLiteral("a.b"), QStringLiteral("xx y") };
    for (int i = 0; i < 400; ++i) {
        QString text;
        const int length = int(random.bounded(24));
        for (int j = 0; j < length; ++j)
            text += alphabet.at(int(random.bounded(alphabet.size())));
        texts << text;
    }
    return texts;
}

void TestHighlight::parsedPatternReadsItemsGroupsAndQuantifiers()
{
    using Item = ParsedPattern::Item;
    const ParsedPattern pattern(QStringLiteral("\\b(p|[^a-c\\]])+\\b|x{0,2}\\.\\d*|"));
    QVERIFY(pattern.isValid());
    const ParsedPattern::Alternatives &top = pattern.alternatives();
    QCOMPARE(top.size(), 3);
    QVERIFY(top.at(2).isEmpty());

    QCOMPARE(top.at(0).size(), 3);
    QCOMPARE(top.at(0).at(0).kind, Item::Boundary);
    const Item &group = top.at(0).at(1);
    QCOMPARE(group.kind, Item::Group);
    QCOMPARE(group.repeat, Item::Plus);
    QVERIFY(!group.optional);
    QCOMPARE(top.at(0).at(2).kind, Item::Boundary);

    const ParsedPattern::Alternatives &inner = pattern.alternatives(group.group);
    QCOMPARE(inner.size(), 2);
    QCOMPARE(inner.at(0).size(), 1);
    QCOMPARE(inner.at(0).at(0).ranges.size(), 1);
    QCOMPARE(inner.at(0).at(0).ranges.at(0).first, ushort('p'));
    const Item &negated = inner.at(1).at(0);
    QCOMPARE(negated.kind, Item::Chars);
    QVERIFY(negated.negated);
    QCOMPARE(negated.ranges.size(), 2);
    QCOMPARE(negated.ranges.at(0).first, ushort('a'));
    QCOMPARE(negated.ranges.at(0).last, ushort('c'));
    QCOMPARE(negated.ranges.at(1).first, ushort(']'));

    const ParsedPattern::Sequence &counted = top.at(1);
    QCOMPARE(counted.size(), 3);
    QCOMPARE(counted.at(0).repeat, Item::OtherRepeat);
    QVERIFY(counted.at(0).optional);
    QCOMPARE(counted.at(1).ranges.at(0).first, ushort('.'));
    QCOMPARE(counted.at(2).kind, Item::ClassEscape);
    QCOMPARE(counted.at(2).repeat, Item::Star);
    QVERIFY(counted.at(2).optional);
}

void TestHighlight::parsedPatternRefusesWhatItDoesNotFollow_data()
{
    QTest::addColumn<QString>("pattern");
    QTest::addColumn<bool>("valid");
    QTest::newRow("empty") << QString() << true;
    QTest::newRow("non-capturing group") << QStringLiteral("(?:a|b)c") << true;
    QTest::newRow("anchors") << QStringLiteral("^a$") << true;
    QTest::newRow("quantifiers in a row") << QStringLiteral("a+?") << true;
    QTest::newRow("back reference") << QStringLiteral("(a)\\1") << false;
    QTest::newRow("character code") << QStringLiteral("\\x41") << false;
    QTest::newRow("look-ahead") << QStringLiteral("a(?=b)") << false;
    QTest::newRow("open class") << QStringLiteral("[ab") << false;
    QTest::newRow("open group") << QStringLiteral("(ab") << false;
    QTest::newRow("closing parenthesis") << QStringLiteral("a)b") << false;
    QTest::newRow("quantifier first") << QStringLiteral("*a") << false;
    QTest::newRow("count without a minimum") << QStringLiteral("a{,2}") << false;
    QTest::newRow("trailing backslash") << QStringLiteral("a\\") << false;
}

// What the reading refuses, both shortcuts leave to the pattern itself.
void TestHighlight::parsedPatternRefusesWhatItDoesNotFollow()
{
    QFETCH(QString, pattern);
    QFETCH(bool, valid);
    const ParsedPattern parsed(pattern);
    QCOMPARE(parsed.isValid(), valid);
    if (valid)
        return;
    QVERIFY(!SimplePattern(parsed).isValid());
    const PatternStart start(parsed);
    const QString text = QStringLiteral("xyz");
    for (int from = 0; from < text.size(); ++from)
        QCOMPARE(start.indexIn(text, from), from);
}

void TestHighlight::patternStartNeverSkipsAMatch_data()
{
    QTest::addColumn<QString>("pattern");
    for (const QString &pattern : shortcutPatterns())
        QTest::newRow(qPrintable(pattern)) << pattern;
}

// Where the shortcut says a search may begin, the pattern finds the same
// leftmost match as from the original offset; where it says there is
// nothing, the pattern finds nothing or an empty match.
void TestHighlight::patternStartNeverSkipsAMatch()
{
    QFETCH(QString, pattern);
    const QRegExp expression(pattern);
    QVERIFY(expression.isValid());
    const PatternStart start(pattern);
    for (const QString &text : shortcutTexts()) {
        for (int from = 0; from <= text.size(); ++from) {
            const int index = expression.indexIn(text, from);
            const int length = expression.matchedLength();
            const int candidate = start.indexIn(text, from);
            const QByteArray where = (QStringLiteral("text \"") + text + QStringLiteral("\" from ")
                                      + QString::number(from)).toUtf8();
            if (candidate < 0) {
                QVERIFY2(index < 0 || length == 0, where.constData());
                continue;
            }
            QVERIFY2(candidate >= from, where.constData());
            QCOMPARE(expression.indexIn(text, candidate), index);
            QCOMPARE(expression.matchedLength(), length);
        }
    }
}

void TestHighlight::patternStartReadsWhereMatchesBegin_data()
{
    QTest::addColumn<QString>("pattern");
    QTest::addColumn<QString>("text");
    QTest::addColumn<int>("expected");
    QTest::newRow("first start character") << QStringLiteral("(p|q)") << QStringLiteral("xxq p") << 2;
    QTest::newRow("none in the text") << QStringLiteral("(p|q)") << QStringLiteral("xyz") << -1;
    QTest::newRow("only at a word start") << QStringLiteral("\\b(x+)\\b") << QStringLiteral("axx xx") << 4;
    QTest::newRow("empty at the first boundary") << QStringLiteral("\\b(m*)\\b") << QStringLiteral(" int m") << -1;
    QTest::newRow("non-empty at the first boundary") << QStringLiteral("\\b(m*)\\b") << QStringLiteral(" mm") << 1;
    QTest::newRow("empty at once") << QStringLiteral("(||)") << QStringLiteral("abc") << -1;
    QTest::newRow("class of any start") << QStringLiteral("\\b(\\w+)\\b") << QStringLiteral("  ab") << 0;
    QTest::newRow("after skipped prefix") << QStringLiteral("``[^\n]*") << QStringLiteral("a ``c") << 2;
    QTest::newRow("inside a word in one alternative")
        << QStringLiteral("\\b(x)|(y)\\b") << QStringLiteral("ay") << 1;
}

void TestHighlight::patternStartReadsWhereMatchesBegin()
{
    QFETCH(QString, pattern);
    QFETCH(QString, text);
    QFETCH(int, expected);
    QCOMPARE(PatternStart(pattern).indexIn(text, 0), expected);
}

void TestHighlight::simplePatternMatchesWherePatternDoes_data()
{
    QTest::addColumn<QString>("pattern");
    QTest::addColumn<bool>("simple");
    const QStringList simpleOnes {
        QStringLiteral("\\b(a.b)\\b"), QStringLiteral("(p|q)"), QStringLiteral("\\b([y])\\b"),
        QStringLiteral("\\b((z))\\b"), QStringLiteral("\\b([a-c]x)\\b"), QStringLiteral("\\b(q\\.r)\\b"),
        QStringLiteral("((v)_)"), QStringLiteral("\\b[{()}]\\b"), QStringLiteral("\\b([^a]b)\\b"),
        QStringLiteral("\\B(x)"), QStringLiteral("\\b(.)\\b"), QStringLiteral("\\b(ж[а-я])\\b"),
        QStringLiteral("\\b(x+)\\b"), QStringLiteral("\\b(m*)\\b"), QStringLiteral("(a+b)"),
        QStringLiteral("\".*\""), QStringLiteral("``[^\n]*") };
    for (const QString &pattern : shortcutPatterns())
        QTest::newRow(qPrintable(pattern)) << pattern << simpleOnes.contains(pattern);
}

// A pattern read as a simple sequence matches at exactly the positions
// where the pattern's own leftmost search from there starts a match, with
// the length the pattern's match has.
void TestHighlight::simplePatternMatchesWherePatternDoes()
{
    QFETCH(QString, pattern);
    QFETCH(bool, simple);
    const SimplePattern sequence(pattern);
    QCOMPARE(sequence.isValid(), simple);
    if (!simple)
        return;
    const QRegExp expression(pattern);
    for (const QString &text : shortcutTexts()) {
        for (int position = 0; position < text.size(); ++position) {
            const bool matchesHere = expression.indexIn(text, position) == position;
            const QByteArray where = (QStringLiteral("text \"") + text + QStringLiteral("\" at ")
                                      + QString::number(position)).toUtf8();
            const int length = sequence.matchAt(text, position);
            QVERIFY2((length >= 0) == matchesHere, where.constData());
            if (matchesHere)
                QVERIFY2(length == expression.matchedLength(), where.constData());
        }
    }
}

QTEST_MAIN(TestHighlight)
#include "tst_highlight.moc"
