#pragma once

#include "camera/vesk_value.h"

/**
 * The camera's vocabulary: ROW(property, JSON path, alternative path, type), in order of creation. A path
 * joined with "/" is also the URL path of a write.
 *
 * fw_ver is read twice on purpose: firmware sends it as a text or as a number.
 */
// clang-format off
#define VESK_CAMERA_VALUES(ROW) \
    ROW(name,              "camera/name",        "", QMetaType::QString) \
    ROW(serial,            "camera/serial",      "", QMetaType::QString) \
    ROW(cameraModel,       "camera/model",       "", QMetaType::QString) \
    ROW(cfa,               "camera/cfa",         "", QMetaType::Int) \
    ROW(fwVer,             "camera/fw_ver",      "", QMetaType::QString) \
    ROW(fwVerInt,          "camera/fw_ver",      "", QMetaType::Int) \
    ROW(fwState,           "camera/fw_state",    "", QMetaType::Int) \
    ROW(acqMode,           "acq/mode",           "", QMetaType::Int) \
    ROW(acqState,          "acq/state",          "", QMetaType::Int) \
    ROW(clkFreq,           "acq/clk_freq",       "", QMetaType::Int) \
    ROW(expClks,           "acq/exp_clks",       "", QMetaType::Int) \
    ROW(expClksMin,        "acq/exp_clks_min",   "", QMetaType::Int) \
    ROW(expClksMax,        "acq/exp_clks_max",   "", QMetaType::Int) \
    ROW(expClksMult,       "acq/exp_clks_mult",  "", QMetaType::Int) \
    ROW(expClksOfst,       "acq/exp_clks_ofst",  "", QMetaType::Int) \
    ROW(expTime,           "acq/exp_time",       "", QMetaType::Double) \
    ROW(frRate,            "acq/fr_rate",        "", QMetaType::Double) \
    ROW(frClks,            "acq/fr_clks",        "", QMetaType::Int) \
    ROW(frClksMin,         "acq/fr_clks_min",    "", QMetaType::Int) \
    ROW(frClksMax,         "acq/fr_clks_max",    "", QMetaType::Int) \
    ROW(fsyncMode,         "acq/fsync_mode",     "", QMetaType::Int) \
    ROW(fsyncState,        "acq/fsync_state",    "", QMetaType::Int) \
    ROW(trigOffset,        "acq/trig_offset",    "", QMetaType::Int) \
    ROW(prtnCnt,           "acq/prtn_cnt",       "", QMetaType::Int) \
    ROW(activeTakeId,      "acq/active_take",    "", QMetaType::Int) \
    ROW(brefState,         "acq/bref_state",     "", QMetaType::UInt) \
    ROW(corrMode,          "acq/corr_mode",      "", QMetaType::UInt) \
    ROW(take1PrtnFrCnt,    "takes/take1/prtn_fr_cnt", "", QMetaType::Int) \
    ROW(res,               "acq/res",            "", QMetaType::QString) \
    ROW(bpp,               "acq/bpp",            "", QMetaType::Int) \
    ROW(lensMount,         "lens/mount",         "", QMetaType::QString) \
    ROW(lensState,         "lens/state",         "", QMetaType::Int) \
    ROW(lensId,            "lens/id",            "", QMetaType::Int) \
    ROW(lensName,          "lens/name",          "", QMetaType::QString) \
    ROW(lensAFSwitch,      "lens/af_switch",     "", QMetaType::Int) \
    ROW(lensFocalLenMin,   "lens/focal_len_min", "", QMetaType::Int) \
    ROW(lensFocalLenMax,   "lens/focal_len_max", "", QMetaType::Int) \
    ROW(lensFocalLen,      "lens/focal_len",     "", QMetaType::Int) \
    ROW(lensFstopMin,      "lens/fstop_min",     "", QMetaType::Double) \
    ROW(lensFstopMax,      "lens/fstop_max",     "", QMetaType::Double) \
    ROW(lensFstop,         "lens/fstop",         "", QMetaType::Double) \
    ROW(lensFocusDist,     "lens/focus_dist",    "", QMetaType::Double) \
    ROW(shtrState,         "shtr/state",         "", QMetaType::Int) \
    ROW(ssdState,          "ssd/state",          "", QMetaType::Int) \
    ROW(ssdWrState,        "ssd/wr_state",       "", QMetaType::Int) \
    ROW(ssdWrSeq,          "ssd/wr_seq",         "", QMetaType::Double) \
    ROW(ssdProgress,       "ssd/progress",       "", QMetaType::Int) \
    ROW(ssdName,           "ssd/name",           "", QMetaType::QString) \
    ROW(ssdSize,           "ssd/size",           "", VeskValue::HexUInt64) \
    ROW(ssdUsed,           "ssd/used",           "", VeskValue::HexUInt64) \
    ROW(ssdNameSeq,        "ssd/name_seq",       "", QMetaType::UInt) \
    ROW(ssdAutosaveMode,   "ssd/autosave/mode",  "", QMetaType::Int) \
    ROW(ssdAutosaveStart,  "ssd/autosave/start", "", QMetaType::Int) \
    ROW(ssdAutosaveCnt,    "ssd/autosave/cnt",   "", QMetaType::UInt) \
    ROW(ssdAutosaveName,   "ssd/autosave/name",  "", QMetaType::QString) \
    ROW(time,              "meta/time",          "", QMetaType::QString) \
    ROW(yearOffset,        "meta/year_offset",   "time/year_offset", QMetaType::Int) \
    ROW(vidFormat,         "video/format",       "", QMetaType::QString) \
    ROW(featureCorrMode,   "features/corr_mode", "", QMetaType::UInt) \
    ROW(featureQ4FW,       "features/q4fw",      "", QMetaType::Int) \
    ROW(featureLens,       "features/lens",      "", QMetaType::Int) \
    ROW(featureShtr,       "features/shtr",      "", QMetaType::Int) \
    ROW(featureSsdFormat,  "features/ssd-format", "", QMetaType::Int) \
    ROW(featureSsdSave,    "features/ssd-save",  "", QMetaType::Int)
// clang-format on
