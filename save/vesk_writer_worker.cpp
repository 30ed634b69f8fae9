#include "save/vesk_writer_worker.h"

VeskWriterWorker::VeskWriterWorker() = default;
