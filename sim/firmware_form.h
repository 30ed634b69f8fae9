#pragma once

#include <QByteArray>
#include <QString>

namespace q4sim
{

/// The form that a firmware file is sent in.
struct FirmwareForm {
    QString error;       ///< what is wrong with it, in one sentence; empty if nothing, and then:
    QString fileName;    ///< not empty and without folders
    QByteArrayView file; ///< lies in the body
};

/// Takes the file out of a request's body. The camera reads one form only, so that this is a check more than
/// a reader: multipart/form-data of one part, whose only header is
/// `Content-Disposition: form-data; name="q4fw"; filename="..."`.
FirmwareForm readFirmwareForm(const QByteArray &contentType, const QByteArray &body);

} // namespace q4sim
