#ifndef BENCHSUPPORT_H
#define BENCHSUPPORT_H

// Helpers the benchmarks share: letting the event loop finish what a step
// caused, figures of a series, and the process's memory.

#include <QVector>

// Runs the event loop until what the last step posted, the repaint among
// it, has been handled.
void settle();

double median(QVector<double> values);
double maximum(const QVector<double> &values);

// The process's resident memory now and at its peak, in MiB, as
// /proc/self/status reports them (VmRSS and VmHWM); -1 where unknown.
double residentMiB();
double peakResidentMiB();

#endif // BENCHSUPPORT_H
