#include "tests/support/thread_sanitizer.h"

#ifdef __SANITIZE_THREAD__

#include <QDeadlineTimer>
#include <QObject>
#include <QThread>

#include <opencv2/core/utility.hpp>

extern "C" void __tsan_acquire(void *address);
extern "C" void __tsan_release(void *address);

/** Hooks for inspection tools; exported by the library, declared by no public header. */
struct QSignalSpyCallbackSet {
    using BeginCallback = void (*)(QObject *caller, int index, void **arguments);
    using EndCallback = void (*)(QObject *caller, int index);
    BeginCallback signalBegin;
    BeginCallback slotBegin;
    EndCallback signalEnd;
    EndCallback slotEnd;
};
Q_CORE_EXPORT void qt_register_signal_spy_callbacks(QSignalSpyCallbackSet *callbacks);

static char handOver;

void prepareThreadSanitizer()
{
    cv::setNumThreads(1);
    static QSignalSpyCallbackSet callbacks{[](QObject *, int, void **) { __tsan_release(&handOver); },
                                           nullptr, nullptr, nullptr};
    qt_register_signal_spy_callbacks(&callbacks);
    QInternal::registerCallback(QInternal::EventNotifyCallback, [](void **) {
        __tsan_acquire(&handOver);
        return false;
    });
}

// The linker puts these in the place of QThread::wait(). A thread's last signal is finished().
extern "C" bool __real__ZN7QThread4waitE14QDeadlineTimer(QThread *thread, QDeadlineTimer deadline);
extern "C" bool __wrap__ZN7QThread4waitE14QDeadlineTimer(QThread *thread, QDeadlineTimer deadline)
{
    const bool ended = __real__ZN7QThread4waitE14QDeadlineTimer(thread, deadline);
    __tsan_acquire(&handOver);
    return ended;
}

// A call for another thread is as good as a signal.
extern "C" bool
__real__ZN11QMetaObject16invokeMethodImplEP7QObjectPN9QtPrivate15QSlotObjectBaseEN2Qt14ConnectionTypeExPKPKvPKPKcPKPKNS2_18QMetaTypeInterfaceE(
    QObject *object, void *slot, Qt::ConnectionType type, qsizetype count, const void *const *values,
    const char *const *names, const void *const *types);
extern "C" bool
__wrap__ZN11QMetaObject16invokeMethodImplEP7QObjectPN9QtPrivate15QSlotObjectBaseEN2Qt14ConnectionTypeExPKPKvPKPKcPKPKNS2_18QMetaTypeInterfaceE(
    QObject *object, void *slot, Qt::ConnectionType type, qsizetype count, const void *const *values,
    const char *const *names, const void *const *types)
{
    __tsan_release(&handOver);
    return __real__ZN11QMetaObject16invokeMethodImplEP7QObjectPN9QtPrivate15QSlotObjectBaseEN2Qt14ConnectionTypeExPKPKvPKPKcPKPKNS2_18QMetaTypeInterfaceE(
        object, slot, type, count, values, names, types);
}

#else

void prepareThreadSanitizer() {}

#endif
