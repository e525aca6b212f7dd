// Feeds every file of the harness's corpus and regressions folders (or of the folders and
// files named on the command line) to its entry point once: the committed inputs replayed in
// every build, with any compiler, under the sanitizers of that build.
#include "FuzzSupport.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QStringList>

#include <cstdio>

int main(int argc, char** argv)
{
    QStringList places;
    for (int i = 1; i < argc; ++i) {
        places << QString::fromLocal8Bit(argv[i]);
    }
    if (places.isEmpty()) {
        places << QStringLiteral(ZORVANE_FUZZ_CORPUS) << QStringLiteral(ZORVANE_FUZZ_REGRESSIONS);
    }
    QStringList files;
    for (const QString& place : qAsConst(places)) {
        if (QFileInfo(place).isDir()) {
            for (const QString& name : QDir(place).entryList(QDir::Files, QDir::Name)) {
                files << QDir(place).filePath(name);
            }
        } else if (QFileInfo(place).isFile()) {
            files << place;
        }
    }
    if (files.isEmpty()) {
        std::fprintf(stderr, "no inputs to replay\n");
        return 1;
    }
    for (const QString& path : qAsConst(files)) {
        QFile file(path);
        if (!file.open(QIODevice::ReadOnly)) {
            std::fprintf(stderr, "cannot read %s\n", qPrintable(path));
            return 1;
        }
        const QByteArray input = file.readAll();
        std::fprintf(stderr, "%s\n", qPrintable(path));
        LLVMFuzzerTestOneInput(reinterpret_cast<const uint8_t*>(input.constData()),
                               static_cast<size_t>(input.size()));
    }
    std::fprintf(stderr, "%d inputs replayed\n", static_cast<int>(files.size()));
    return 0;
}
