#pragma once

#include <QByteArray>
#include <QQueue>

/**
 * Memory in which arriving bytes become chunks, without a copy between. Blocks are filled from front to end
 * and chunks are parts of them; a block is used again when all of its chunks have been let go, which spares
 * the system the work of finding as much memory anew. A chunk holds its block by itself, and may outlive
 * this.
 */
class ChunkMemory
{
public:
    /**
     * Room for that many bytes behind the ones that have arrived already. framesWritten tells which chunks
     * are done with.
     */
    char *room(qsizetype bytes, qlonglong framesWritten);
    /** So many bytes have been put into the room. */
    void arrived(qsizetype bytes) { m_end += bytes; }
    /** Bytes that have arrived and are in no chunk yet. */
    qsizetype begun() const { return m_end - m_begin; }
    /** Makes a chunk of the first of them. framesRead is what the writer tells when it has written the chunk.
     */
    QByteArray chunk(qsizetype bytes, qlonglong framesRead);
    void clear();

private:
    struct Block {
        QByteArray bytes;
        qlonglong framesRead = 0;
    };

    void nextBlock(qsizetype bytes, qlonglong framesWritten);

    Block m_block;
    /** In the order in which they were filled. */
    QQueue<Block> m_filled;
    qsizetype m_begin = 0;
    qsizetype m_end = 0;
};
