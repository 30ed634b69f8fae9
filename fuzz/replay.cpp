#include "fuzz/fuzz_application.h"

#include <QDirIterator>
#include <QFile>

#include <cstdio>

/** replay FOLDER-OR-FILE...: gives a harness the inputs that are kept in files, one after the other. */
int main(int argc, char *argv[])
{
    QStringList files;
    for (int i = 1; i < argc; ++i) {
        const QString path = QFile::decodeName(argv[i]);
        QDirIterator folder(path, QDir::Files, QDirIterator::Subdirectories);
        while (folder.hasNext())
            files.append(folder.next());
        if (QFileInfo(path).isFile())
            files.append(path);
    }
    for (const QString &name : std::as_const(files)) {
        QFile file(name);
        if (!file.open(QIODevice::ReadOnly)) {
            std::fprintf(stderr, "cannot read %s\n", qPrintable(name));
            return 1;
        }
        std::printf("%s\n", qPrintable(name));
        std::fflush(stdout);
        const QByteArray bytes = file.readAll();
        LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t *>(bytes.constData()),
                               std::size_t(bytes.size()));
    }
    std::printf("%lld inputs\n", qint64(files.size()));
    return files.isEmpty() ? 1 : 0;
}
