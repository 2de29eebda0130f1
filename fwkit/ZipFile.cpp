#include "ZipFile.h"

#include "Interruption.h"
#include "Progress.h"
#include "UsageError.h"

#include <QFile>

#include <memory>
#include <sys/stat.h>
#include <zip.h>

namespace {

// 1 January 1980, 12:00, in the format of MS-DOS, which has no time zone.
constexpr zip_uint16_t FixedDate = 1 << 5 | 1;
constexpr zip_uint16_t FixedTime = 12 << 11;

struct Discard
{
    void operator()(zip_t* archive) const { zip_discard(archive); }
};
using Archive = std::unique_ptr<zip_t, Discard>;

[[noreturn]] void Fail(const QString& name, const char* why)
{
    throw UsageError(
        Kit::tr("%1: cannot be written (%2); nothing is left behind: make room, or choose another --output")
            .arg(name, QString::fromLocal8Bit(why)));
}

bool Add(zip_t* archive, const ZipItem& item)
{
    zip_source_t* source =
        item.source.isEmpty()
            ? zip_source_buffer(archive, item.content.constData(), zip_uint64_t(item.content.size()), 0)
            : zip_source_file(archive, QFile::encodeName(item.source).constData(), 0, 0);
    if (!source)
        return false;
    const zip_int64_t index = zip_file_add(archive, item.name.toUtf8().constData(), source, ZIP_FL_ENC_UTF_8);
    if (index < 0) {
        zip_source_free(source);
        return false;
    }
    const zip_uint32_t mode = S_IFREG | (item.isExecutable ? 0755U : 0644U);
    return zip_file_set_external_attributes(archive, zip_uint64_t(index), 0, ZIP_OPSYS_UNIX, mode << 16) == 0
           && zip_file_set_dostime(archive, zip_uint64_t(index), FixedTime, FixedDate, 0) == 0;
}

void ShowProgress(zip_t*, double done, void* progress)
{
    constexpr int Steps = 1000;
    static_cast<Progress*>(progress)->Show(Kit::tr("Packing"), qint64(done * Steps), Steps);
}

int IsToEnd(zip_t*, void*)
{
    return Interruption::HasCome() ? 1 : 0;
}

} // namespace

void WriteZipFile(const QString& path, const QString& name, const QList<ZipItem>& items, Progress& progress)
{
    int code = 0;
    Archive archive(zip_open(QFile::encodeName(path).constData(), ZIP_CREATE | ZIP_EXCL, &code));
    if (!archive) {
        zip_error_t error;
        zip_error_init_with_code(&error, code);
        const QByteArray why = zip_error_strerror(&error);
        zip_error_fini(&error);
        Fail(name, why.constData());
    }
    for (const ZipItem& item : items) {
        if (!Add(archive.get(), item))
            Fail(name, zip_strerror(archive.get()));
    }
    zip_register_progress_callback_with_state(archive.get(), 0.01, ShowProgress, nullptr, &progress);
    zip_register_cancel_callback_with_state(archive.get(), IsToEnd, nullptr, nullptr);
    if (zip_close(archive.get()) != 0) {
        Interruption::Check();
        Fail(name, zip_strerror(archive.get()));
    }
    static_cast<void>(archive.release());
}
