#include "benchsupport.h"

#include <QCoreApplication>
#include <QFile>

#include <algorithm>

void settle()
{
    // A keystroke posts the repaint, and the repaint may post more (the
    // gutter follows the text): a few rounds see it through.
    for (int round = 0; round < 3; ++round) {
        QCoreApplication::sendPostedEvents();
        QCoreApplication::processEvents();
    }
}

double median(QVector<double> values)
{
    if (values.isEmpty())
        return 0;
    std::sort(values.begin(), values.end());
    const int middle = values.size() / 2;
    return values.size() % 2 ? values.at(middle) : (values.at(middle - 1) + values.at(middle)) / 2;
}

double maximum(const QVector<double> &values)
{
    return values.isEmpty() ? 0 : *std::max_element(values.begin(), values.end());
}

namespace {

double statusMiB(const char *field)
{
    QFile status(QStringLiteral("/proc/self/status"));
    if (!status.open(QIODevice::ReadOnly))
        return -1;
    const QByteArray prefix = QByteArray(field) + ':';
    for (const QByteArray &line : status.readAll().split('\n')) {
        if (line.startsWith(prefix)) // "VmRSS:     12345 kB"
            return line.mid(prefix.size()).trimmed().split(' ').value(0).toDouble() / 1024;
    }
    return -1;
}

} // namespace

double residentMiB()
{
    return statusMiB("VmRSS");
}

double peakResidentMiB()
{
    return statusMiB("VmHWM");
}
