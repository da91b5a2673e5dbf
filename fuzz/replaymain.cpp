// The main of a fuzz target built without libFuzzer: runs each file of the
// directories given (or each file given) through the target once, as
// libFuzzer replays a corpus. A failed check aborts the program.

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QStringList>

#include <cstdint>
#include <cstdio>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size);
// Only the targets that need something set up first define it.
extern "C" __attribute__((weak)) int LLVMFuzzerInitialize(int *argc, char ***argv);

static QStringList inputFiles(const QString &argument)
{
    const QFileInfo info(argument);
    if (!info.isDir())
        return { argument };
    QStringList files;
    const QDir dir(argument);
    const QStringList names = dir.entryList(QDir::Files, QDir::Name);
    for (const QString &name : names)
        files << dir.filePath(name);
    return files;
}

int main(int argc, char **argv)
{
    if (argc < 2) {
        std::fprintf(stderr, "usage: %s DIRECTORY|FILE...\n", argv[0]);
        return 2;
    }
    if (LLVMFuzzerInitialize)
        LLVMFuzzerInitialize(&argc, &argv);

    int count = 0;
    for (int i = 1; i < argc; ++i) {
        const QStringList files = inputFiles(QFile::decodeName(argv[i]));
        for (const QString &path : files) {
            QFile file(path);
            if (!file.open(QIODevice::ReadOnly)) {
                std::fprintf(stderr, "%s: %s\n", qPrintable(path), qPrintable(file.errorString()));
                return 1;
            }
            const QByteArray bytes = file.readAll();
            std::printf("%s\n", qPrintable(path));
            std::fflush(stdout);
            LLVMFuzzerTestOneInput(reinterpret_cast<const uint8_t *>(bytes.constData()), size_t(bytes.size()));
            ++count;
        }
    }
    // An empty corpus would pass without running anything.
    if (count == 0) {
        std::fprintf(stderr, "no input files\n");
        return 1;
    }
    std::printf("%d inputs, no finding\n", count);
    return 0;
}
