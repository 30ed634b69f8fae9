#include "take/chunk_memory.h"

#include <algorithm>
#include <utility>

/** A few chunks. The frame that is cut by the end of a block is copied to the next. */
static constexpr qsizetype BlockBytes = 4 * 1024 * 1024;

char *ChunkMemory::room(qsizetype bytes, qlonglong framesWritten)
{
    if (m_end + bytes > m_block.bytes.size())
        nextBlock(bytes, framesWritten);
    // Not data(), which would copy what chunks share.
    return const_cast<char *>(m_block.bytes.constData()) + m_end;
}

void ChunkMemory::nextBlock(qsizetype bytes, qlonglong framesWritten)
{
    Block last = std::exchange(m_block, {});
    const qsizetype needed = begun() + bytes;
    if (!m_filled.isEmpty() && m_filled.head().framesRead <= framesWritten &&
        m_filled.head().bytes.isDetached())
        m_block.bytes = m_filled.dequeue().bytes;
    if (m_block.bytes.size() < needed)
        m_block.bytes = QByteArray(std::max(needed, BlockBytes), Qt::Uninitialized);
    std::copy_n(last.bytes.constData() + m_begin, begun(), m_block.bytes.data());
    m_end = begun();
    m_begin = 0;
    if (!last.bytes.isEmpty())
        m_filled.enqueue(std::move(last));
}

QByteArray ChunkMemory::chunk(qsizetype bytes, qlonglong framesRead)
{
    QByteArray::DataPointer &block = m_block.bytes.data_ptr();
    block.ref();
    QByteArray result(QByteArray::DataPointer(block.d_ptr(), block.data() + m_begin, bytes));
    m_begin += bytes;
    m_block.framesRead = framesRead;
    return result;
}

void ChunkMemory::clear()
{
    *this = {};
}
