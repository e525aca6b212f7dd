#pragma once

// What the benchmarks share: order statistics, how much of a text arrived in order, the rows
// of the table scripts/bench prints, and a process's wake-ups, CPU time and memory from /proc.
#include <QDir>
#include <QFile>
#include <QString>
#include <QStringList>
#include <QVector>

#include <algorithm>
#include <cstdio>
#include <vector>

#include <unistd.h>

namespace Bench {

// The q-quantile (0..1) of the values, nearest rank; 0 for none.
inline double quantile(std::vector<double> values, double q)
{
    if (values.empty()) {
        return 0;
    }
    std::sort(values.begin(), values.end());
    const size_t rank = std::min(values.size() - 1, size_t(q * double(values.size())));
    return values[rank];
}

// Characters of expected missing from got, and characters of got that are not expected or
// out of order: what is left over on each side of their longest common subsequence.
struct Arrival {
    int lost = 0;
    int extra = 0;
    bool exact() const { return lost == 0 && extra == 0; }
};
inline Arrival compare(const QString& expected, const QString& got)
{
    const QVector<uint> a = expected.toUcs4();
    const QVector<uint> b = got.toUcs4();
    std::vector<int> previous(size_t(b.size()) + 1, 0);
    std::vector<int> row(size_t(b.size()) + 1, 0);
    for (int i = 1; i <= a.size(); ++i) {
        for (int j = 1; j <= b.size(); ++j) {
            row[size_t(j)] = a[i - 1] == b[j - 1] ? previous[size_t(j - 1)] + 1
                                                  : std::max(previous[size_t(j)], row[size_t(j - 1)]);
        }
        std::swap(previous, row);
    }
    const int common = previous[size_t(b.size())];
    return Arrival{a.size() - common, b.size() - common};
}

// One row of the table: the figure, ours, the peer's or the limit's from the same run, the
// target, and whether ours meets it.
inline void row(const QString& figure, const QString& ours, const QString& peer, const QString& target,
                bool met)
{
    std::printf("| %s | %s | %s | %s | %s |\n", qPrintable(figure), qPrintable(ours), qPrintable(peer),
                qPrintable(target), met ? "met" : "**missed**");
    std::fflush(stdout);
}

inline QString ms(double value)
{
    return QString::number(value, 'f', value < 10 ? 2 : 1) + QStringLiteral(" ms");
}

// Voluntary and involuntary context switches of every thread of a process: each one is the
// process waking up (or being woken) once.
inline long long contextSwitches(qint64 pid)
{
    long long total = 0;
    const QString tasks = QStringLiteral("/proc/%1/task").arg(pid);
    for (const QString& task : QDir(tasks).entryList(QDir::Dirs | QDir::NoDotAndDotDot)) {
        QFile status(tasks + QLatin1Char('/') + task + QStringLiteral("/status"));
        if (!status.open(QIODevice::ReadOnly)) {
            continue;
        }
        for (const QByteArray& line : status.readAll().split('\n')) {
            if (line.startsWith("voluntary_ctxt_switches:") ||
                line.startsWith("nonvoluntary_ctxt_switches:")) {
                total += line.mid(line.indexOf(':') + 1).trimmed().toLongLong();
            }
        }
    }
    return total;
}

// User and system CPU time of the whole process, in seconds (/proc/PID/stat, clock ticks).
inline double cpuSeconds(qint64 pid)
{
    QFile stat(QStringLiteral("/proc/%1/stat").arg(pid));
    if (!stat.open(QIODevice::ReadOnly)) {
        return 0;
    }
    const QByteArray text = stat.readAll();
    // Fields after the command name, which may hold spaces: state is field 3, utime 14, stime 15.
    const QList<QByteArray> fields = text.mid(text.lastIndexOf(')') + 2).split(' ');
    if (fields.size() < 13) {
        return 0;
    }
    return double(fields.at(11).toLongLong() + fields.at(12).toLongLong()) / double(sysconf(_SC_CLK_TCK));
}

// Resident memory in MiB (VmRSS of /proc/PID/status).
inline double residentMiB(qint64 pid)
{
    QFile status(QStringLiteral("/proc/%1/status").arg(pid));
    if (!status.open(QIODevice::ReadOnly)) {
        return 0;
    }
    for (const QByteArray& line : status.readAll().split('\n')) {
        if (line.startsWith("VmRSS:")) {
            return line.mid(6).trimmed().split(' ').value(0).toDouble() / 1024.0;
        }
    }
    return 0;
}

}  // namespace Bench
