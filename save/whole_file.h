#pragma once

class QByteArray;
class QFileDevice;

/** Writes all of the bytes. False as well when the disk took a part of them. */
bool writeWhole(QFileDevice &file, const QByteArray &data);

/** Closes the file. False when what was written before is not in it after all, or nobody can find it. */
bool closeWhole(QFileDevice &file);
