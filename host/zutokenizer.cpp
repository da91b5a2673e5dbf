#include "zutokenizer.h"

namespace {

bool isBlank(QChar ch)
{
    return ch == QLatin1Char(' ') || ch == QLatin1Char('\t');
}

bool isWordChar(QChar ch)
{
    return ch.isLetterOrNumber() || ch == QLatin1Char('_');
}

bool isBracket(QChar ch)
{
    return QStringLiteral("(){}[]").contains(ch);
}

} // namespace

QStringList ZuTokenizer::lines(const QString &text)
{
    QStringList lines;
    int start = 0;
    for (int i = 0; i < text.size(); ++i) {
        const QChar ch = text.at(i);
        if (ch != QLatin1Char('\n') && ch != QLatin1Char('\r'))
            continue;
        lines << text.mid(start, i - start);
        if (ch == QLatin1Char('\r') && i + 1 < text.size() && text.at(i + 1) == QLatin1Char('\n'))
            ++i;
        start = i + 1;
    }
    lines << text.mid(start);
    return lines;
}

QVector<ZuTokenizer::Token> ZuTokenizer::tokens(const QString &text)
{
    QVector<Token> tokens;
    const QStringList all = lines(text);
    for (int i = 0; i < all.size(); ++i) {
        if (!addLine(tokens, all.at(i), i + 1))
            break;
    }
    return tokens;
}

bool ZuTokenizer::addLine(QVector<Token> &tokens, const QString &line, int number)
{
    int i = 0;
    while (i < line.size()) {
        const QChar ch = line.at(i);
        if (ch.isSpace()) {
            ++i;
            continue;
        }
        if (line.midRef(i, 2) == QLatin1String("``"))
            break;

        Token token{Token::Sign, QString(ch), number, i};
        int end = i + 1;
        if (ch == QLatin1Char('"')) {
            const int close = line.indexOf(QLatin1Char('"'), end);
            if (close < 0) {
                tokens.append({Token::UnclosedString, line.mid(i), number, i});
                return false;
            }
            token.kind = Token::String;
            end = close + 1;
        } else if (ch.isDigit()) {
            token.kind = Token::Number;
            while (end < line.size() && (isWordChar(line.at(end)) || line.at(end) == QLatin1Char('.')))
                ++end;
        } else if (isWordChar(ch)) {
            token.kind = Token::Word;
            while (end < line.size() && isWordChar(line.at(end)))
                ++end;
            int next = end;
            while (next < line.size() && isBlank(line.at(next)))
                ++next;
            token.beforeBracket = next < line.size() && line.at(next) == QLatin1Char('(');
        } else if (isBracket(ch)) {
            token.kind = Token::Bracket;
        }
        token.text = line.mid(i, end - i);
        tokens.append(token);
        i = end;
    }
    return true;
}
