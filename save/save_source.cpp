#include "save/save_source.h"

#include "camera/camera.h"
#include "file/vesk_file.h"
#include "take/abstract_take.h"

SaveSource::SaveSource(AbstractTake *take)
    : object(take), queue(take->fileSaveJobQueue()),
      cameraName(take->camera()->nameValue()->variant().toString()), takeId(take->takeId())
{
}

SaveSource::SaveSource(VeskFile *file) : object(file), fileName(file->fileName()) {}
