#include "file/vesk_file.h"

#include "app/vesk_app.h"
#include "camera/vesk_value.h"
#include "file/vesk_file_img_adj_model.h"
#include "image/img_search.h"
#include "take/frame_geometry.h"
#include "take/raw_frame.h"

#include <QDebug>
#include <QFile>
#include <QFileInfo>

VeskFile::VeskFile(const QString &fileName, VeskApp *app, const PlayClock &playClock)
    : PlaybackVeskObject(VeskFileType, app, playClock), m_file(new QFile(fileName, this)),
      m_fileName(fileName)
{
    auto *model = new VeskFileImgAdjModel(this);
    setImgAdjModel(model);
    connect(model, &ImgAdjModel::imgAdjUpdated, this, &VeskFile::refreshIfPaused);
    setVeskFrame(new VeskFrame(&model->data(), this));
    auto *corrMode =
        new VeskValue({QStringLiteral("acq"), QStringLiteral("corr_mode")}, QMetaType::UInt, this);
    setCorrModeValue(corrMode);
    appendValue(corrMode);
    setObjectName(objectName() + QStringLiteral("-VeskFile"));
}

VeskFile::~VeskFile() = default;

bool VeskFile::open()
{
    // A pipe would hold the program up until somebody writes into it.
    m_isOpen = QFileInfo(m_fileName).isFile() && m_file->open(QIODevice::ReadOnly | QIODevice::Unbuffered);
    return m_isOpen && readHeader();
}

bool VeskFile::readHeader()
{
    const auto header = VeskFileFormat::readHeader(*m_file);
    if (!header) {
        qCritical() << "unsupported vesk file";
        return false;
    }
    m_header = *header;
    QString error;
    const auto values = VeskFileFormat::readJson(*m_file, m_header, error);
    if (!values) {
        qCritical().noquote() << objectName() + QStringLiteral(": json parse error:") << error;
        return false;
    }
    updateValues(*values);
    const int first = firstFrValue()->variant().toInt();
    setFr(first, true);
    setAFr(first, true);
    setBFr(lastFrValue()->variant().toInt(), true);
    setValuesInit(true);
    return true;
}

int VeskFile::getFrame(RawFrame *rawFrame, qlonglong fr)
{
    if (!m_isOpen || !rawFrame)
        return -1;
    const FrameGeometry geometry = frameGeometry(*this);
    const auto position = VeskFileFormat::framePosition(dataOffset(), geometry.frameSize(), fr,
                                                        firstFrValue()->variant().toInt());
    rawFrame->init(VeskFileFormat::readRecords(*m_file, position, geometry.frameSize(), 1), geometry.width,
                   geometry.height, geometry.imgSize(), geometry.metaSize, yearOffset());
    return 0;
}

void VeskFile::close()
{
    m_file->close();
    m_isOpen = false;
    imgSearch()->cancel();
    emit shouldBeUnselected();
    emit closed(this);
}
