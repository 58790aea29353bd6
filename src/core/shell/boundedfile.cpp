#include "shell/boundedfile.h"

#include <QFile>

using namespace Qt::StringLiterals;

BoundedFile BoundedFile::read(const QString &path, qint64 maxBytes)
{
    BoundedFile result;
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        result.problem = file.errorString();
        return result;
    }
    // One byte past the bound tells a file of exactly the bound from a larger one.
    result.bytes = file.read(maxBytes + 1);
    if (result.bytes.size() <= maxBytes) {
        result.status = Status::Read;
        return result;
    }
    result.status = Status::TooLarge;
    result.bytes.truncate(maxBytes);
    result.problem = file.isSequential() ? u"it holds more than %1 bytes"_s.arg(maxBytes)
                                         : u"it is %1 bytes long"_s.arg(file.size());
    return result;
}
