#pragma once

#include <QString>

class AbstractTake;
class PlaybackVeskObject;
class SaveJobQueue;
class SsdTake;
class VeskFile;

/** A source as a save job sees it, with what the job goes on telling of it when it has gone. */
struct SaveSource {
    /** A take on a camera; its saves wait in the camera's queue. */
    SaveSource(AbstractTake *take);
    /** A recording on a camera's drive, which has a name as well. */
    SaveSource(SsdTake *take);
    /** An open native file; its saves wait for nothing. */
    SaveSource(VeskFile *file);

    PlaybackVeskObject *object;
    SaveJobQueue *queue = nullptr;
    QString cameraName;
    int takeId = 0;
    QString fileName;
};
