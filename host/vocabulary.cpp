#include "vocabulary.h"

#include <QFile>
#include <QRegularExpression>
#include <QTextCodec>

#include <algorithm>

namespace {

QTextCodec *windows1251()
{
    static QTextCodec *const codec = QTextCodec::codecForName("windows-1251");
    return codec;
}

bool isAscii(const QString &text)
{
    return std::all_of(text.begin(), text.end(), [](QChar ch) { return ch.unicode() < 0x80; });
}

// Why these names cannot make an entry, or an empty string. The plug-in
// decodes an operation's first name as ASCII and every other name as
// windows-1251, each up to its first NUL; a name given twice would make its
// tool tip ambiguous.
template <typename KnownNames>
QString namesProblem(const QStringList &names, bool asciiFirstName, const KnownNames &known)
{
    if (names.isEmpty())
        return QStringLiteral("missing name");
    if (names.size() > 2)
        return QStringLiteral("too many names: at most a name and a second name");
    if (asciiFirstName && !isAscii(names.first()))
        return QStringLiteral("operation name \"%1\" is not ASCII").arg(names.first());
    for (int i = 0; i < names.size(); ++i) {
        const QString &name = names.at(i);
        if (name.contains(QChar(0)))
            return QStringLiteral("a name holds a NUL character");
        if (!windows1251()->canEncode(name))
            return QStringLiteral("name \"%1\" cannot be written in windows-1251").arg(name);
        if (known.contains(name) || names.indexOf(name) < i)
            return QStringLiteral("name \"%1\" given twice").arg(name);
    }
    return QString();
}

} // namespace

bool Vocabulary::load(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        clear();
        m_errorString = file.errorString();
        return false;
    }
    loadBytes(file.readAll(), path);
    return true;
}

void Vocabulary::loadBytes(const QByteArray &bytes, const QString &source)
{
    clear();
    QTextCodec *const utf8 = QTextCodec::codecForName("UTF-8");
    int number = 0;
    for (int start = 0; start < bytes.size();) {
        const int lineEnd = bytes.indexOf('\n', start);
        const int end = lineEnd < 0 ? bytes.size() : lineEnd + 1;
        ++number;
        // Each line on its own, so that a bad byte costs only its line.
        QTextCodec::ConverterState state;
        const QString line = utf8->toUnicode(bytes.constData() + start, end - start, &state).trimmed();
        QString problem;
        if (state.invalidChars > 0)
            problem = QStringLiteral("not UTF-8 text");
        else if (!line.isEmpty() && !line.startsWith(QLatin1Char('#')))
            problem = addLine(line);
        if (!problem.isEmpty())
            m_errors << QStringLiteral("%1:%2: %3").arg(source, QString::number(number), problem);
        start = end;
    }
    buildTables();
}

QString Vocabulary::errorString() const
{
    return m_errorString;
}

QStringList Vocabulary::errors() const
{
    return m_errors;
}

const QVector<Vocabulary::Operation> &Vocabulary::operations() const
{
    return m_operations;
}

const QVector<Vocabulary::Type> &Vocabulary::types() const
{
    return m_types;
}

QString Vocabulary::toolTip(const QString &name) const
{
    const int index = m_operationByName.value(name, -1);
    return index < 0 ? QString() : m_operations.at(index).toolTip;
}

ARRAY *Vocabulary::operationTable()
{
    return &m_operationTable;
}

ARRAY *Vocabulary::typeTable()
{
    return &m_typeTable;
}

void Vocabulary::clear()
{
    m_operations.clear();
    m_types.clear();
    m_operationByName.clear();
    m_typeNames.clear();
    m_errorString.clear();
    m_errors.clear();
    buildTables();
}

// "keyword names... [: tool tip]": the first ":" standing alone ends the
// names, so that a name such as ":=" needs no quoting.
QString Vocabulary::addLine(const QString &line)
{
    static const QRegularExpression separator(QStringLiteral("(^|\\s):(\\s|$)"));
    static const QRegularExpression blanks(QStringLiteral("\\s+"));

    const QRegularExpressionMatch match = separator.match(line);
    const bool hasToolTip = match.hasMatch();
    QStringList words = line.left(hasToolTip ? match.capturedStart() : line.size())
                                .split(blanks, Qt::SkipEmptyParts);
    if (words.isEmpty())
        return QStringLiteral("missing keyword");

    const QString keyword = words.takeFirst();
    if (keyword == QLatin1String("operation")) {
        QString toolTip = hasToolTip ? line.mid(match.capturedEnd()).trimmed() : QString();
        return addOperation(words, toolTip.replace(QLatin1String("\\n"), QLatin1String("\n")));
    }
    if (keyword == QLatin1String("type"))
        return hasToolTip ? QStringLiteral("a type has no tool tip") : addType(words);
    return QStringLiteral("unknown keyword \"%1\"").arg(keyword);
}

QString Vocabulary::addOperation(const QStringList &names, const QString &toolTip)
{
    const QString problem = namesProblem(names, true, m_operationByName);
    if (!problem.isEmpty())
        return problem;
    for (const QString &name : names)
        m_operationByName.insert(name, m_operations.size());
    m_operations.append(Operation { names.first(), names.value(1), toolTip });
    return QString();
}

QString Vocabulary::addType(const QStringList &names)
{
    const QString problem = namesProblem(names, false, m_typeNames);
    if (!problem.isEmpty())
        return problem;
    for (const QString &name : names)
        m_typeNames.insert(name);
    m_types.append(Type { names.first(), names.value(1) });
    return QString();
}

void Vocabulary::buildTables()
{
    m_encodedNames.clear();
    m_operationRecords.clear();
    m_typeRecords.clear();
    // Room for every name up front: no name moves once a record points to it.
    m_encodedNames.reserve(2 * (m_operations.size() + m_types.size()));
    const auto encode = [this](const QString &name) -> const char * {
        if (name.isEmpty())
            return nullptr;
        m_encodedNames.append(windows1251()->fromUnicode(name));
        return m_encodedNames.constLast().constData();
    };

    for (const Operation &operation : qAsConst(m_operations)) {
        OperationRecord record = {};
        record.name = encode(operation.name);
        record.secondName = encode(operation.secondName);
        m_operationRecords.push_back(record);
    }
    for (const Type &type : qAsConst(m_types)) {
        TypeRecord record = {};
        record.name = encode(type.name);
        record.secondName = encode(type.secondName);
        m_typeRecords.push_back(record);
    }

    OperationRecord *operations = m_operationRecords.data();
    TypeRecord *types = m_typeRecords.data();
    m_operationTable = { operations, 0, operations + m_operationRecords.size() };
    m_typeTable = { types, 0, types + m_typeRecords.size() };
}
