#include "save/background.h"

#include "save/av_pointers.h"

#include <QDir>

#include <exception>
#include <future>
#include <sched.h>
#include <sys/resource.h>
#include <unistd.h>

static QStringList threads()
{
    return QDir(QStringLiteral("/proc/self/task")).entryList(QDir::Dirs | QDir::NoDotAndDotDot);
}

/** A thread that already gives way to more than these stays as it is. */
static void giveWay(pid_t thread, int niceness)
{
    if (getpriority(PRIO_PROCESS, id_t(thread)) < niceness)
        setpriority(PRIO_PROCESS, id_t(thread), niceness);
}

/** Threads that began since. */
static void letGiveWay(const QStringList &before)
{
    for (const QString &name : threads()) {
        if (before.contains(name))
            continue;
        const pid_t thread = name.toInt();
        const sched_param none{};
        sched_setscheduler(thread, SCHED_OTHER, &none);
        giveWay(thread, EncoderNiceness);
    }
}

void giveWay()
{
    giveWay(gettid(), WriterNiceness);
}

int openInBackground(AVCodecContext *context, const AVCodec *codec, AVDictionary **options)
{
    try {
        const QStringList before = threads();
        const int code = std::async(std::launch::async, avcodec_open2, context, codec, options).get();
        letGiveWay(before);
        return code;
    } catch (const std::exception &) {
        return AVERROR(EAGAIN);
    }
}
