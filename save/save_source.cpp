#include "save/save_source.h"

#include "camera/camera.h"
#include "file/vesk_file.h"
#include "take/ssd_take.h"

SaveSource::SaveSource(AbstractTake *take)
    : object(take), queue(take->fileSaveJobQueue()),
      cameraName(take->camera()->nameValue()->variant().toString()), takeId(take->takeId())
{
}

SaveSource::SaveSource(SsdTake *take) : SaveSource(static_cast<AbstractTake *>(take))
{
    fileName = take->name();
}

SaveSource::SaveSource(VeskFile *file) : object(file), fileName(file->fileName()) {}
