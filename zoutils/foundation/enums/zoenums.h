#pragma once
// Shared enumerations of the utility library and its sibling libraries.
// Header-only and free of any library dependency beyond QtCore, so that
// zoparser, zoimage and zoutils all agree on these values.

#include <QString>

// Status returned by most operations. 0 is success; 1, 25 and 27 are neutral
// outcomes. Values are part of the contract with callers; every value has a
// fixed message text (CZOSErrorHandler).
enum tag_estatus : int {
    ES_SUCCESS = 0,
    ES_SUCCEEDED = 1,
    ES_FILE_NOT_FOUND = 2,
    ES_HEADER_NOT_FOUND = 3,
    ES_EMPTY_FILE = 4,
    ES_CORRUPT_FILE = 5,
    ES_READ_FAILED = 6,
    ES_WRITE_FAILED = 7,
    ES_INSUFFICIENT_SPACE = 8,
    ES_FILE_NOT_CLOSED = 9,
    ES_END_OF_FILE = 10,
    ES_OPEN_FAILED = 11,
    ES_FILE_OPERATION_FAILED = 12,
    ES_DELETE_FAILED = 13,
    ES_UPDATE_FAILED = 14,
    ES_FORMAT_CHAR_NOT_FOUND = 15,
    ES_INVALID_POINTER = 16,
    ES_UNKNOWN_COMMAND = 17,
    ES_WRONG_INFORMATION = 18,
    ES_INVALID_ARGUMENT = 19,
    ES_INVALID_CHARACTERS = 20,
    ES_INVALID_DATA_TYPE = 21,
    ES_INVALID_MEDIA_TYPE = 22,
    ES_LOG_UPDATE_FAILED = 23,
    ES_ID_NOT_FOUND = 24,
    ES_TIMER_CREATED = 25,
    ES_TIMER_CREATE_FAILED = 26,
    ES_MATCH_FOUND = 27,
    ES_MATCH_NOT_FOUND = 28,
    ES_END_OF_BUFFER = 29,
    ES_NOT_SUPPORTED = 30,
    ES_UNKNOWN_ERROR = 31,
    ES_CRITICAL_ERROR = 32,
    ES_INVALID_STATE = 33,
    ES_OUT_OF_MEMORY = 34,
    ES_INIT_FAILED = 35,
    ES_UNINIT_FAILED = 36,
    ES_REMOVE_FAILED = 37,
    ES_ALREADY_PRESENT = 38,
    ES_INVALID_FILE_TYPE = 39,
    ES_IMAGES_NOT_FOUND = 40,
    ES_DATASET_EXISTS = 41,
    ES_DATASET_CLOSE_FAILED = 42,
    ES_NO_PRINTER = 43,
    ES_DATASET_FILES_MISSING = 44,
    ES_INVALID_IMAGE = 45,
    ES_PROCESS_ABORTED = 46,
    ES_PROCESS_FAILED = 47,
    ES_INVALID_INPUT = 48,
    ES_SECTION_KEY_NOT_FOUND = 49,
    ES_CROP_RECT_UNDEFINED = 50,
    ES_INVALID_COMMAND_LINE = 51,
    ES_NO_TOPOGRAPHY_DATA = 52,
    ES_NO_SUBFOLDERS = 53,
    ES_LAST_FOLDER = 54,
    ES_REGISTRY_WRITE_FAILED = 55,
    ES_NO_VALID_DATASETS = 56,
    ES_ABORTED_BY_USER = 57,
    ES_INVALID_USER_ID = 58,
    ES_LABEL_FILE_CORRUPT = 59,
    ES_DIR_CREATE_FAILED = 60,
    ES_WRONG_IMAGE_TYPE = 61,
    ES_INCORRECT_PATH = 62,
    ES_NO_TOPOGRAPHY_IMAGES = 63,
    ES_NO_WRITE_PERMISSION = 64,
    ES_NO_READ_PERMISSION = 65,
    ES_VOLUME_LOAD_FAILED = 66,
    ES_MESH_LOAD_FAILED = 67,
    ES_OPERATION_UNSUPPORTED = 68,
    ES_APPLY_ALL_IN_3D = 69,
    ES_SPECTRAL_DATA_INSUFFICIENT = 70,
    ES_NO_CLICKINFO_SECTIONS = 71,
    ES_NO_SEQINFO_SECTIONS = 72,
    ES_ORGAN_FIT_FAILED = 73,
    ES_ORGAN_DB_UNSUPPORTED = 74,
    ES_NO_ORGANS = 75,
    ES_MEDIA_FILE_FAILED = 76,
    ES_RESERVED_77 = 77,
    ES_RESERVED_78 = 78,
    ES_MOTOR_COMMAND_FAILED = 79,
    ES_MOTORS_MOVING = 80,
    ES_MOTOR_POSITIONING_FAILED = 81,
    ES_SPECTRAL_CONFIG_NOT_FOUND = 82,
    ES_SYSTEM_CONFIG_NOT_FOUND = 83,
    ES_BAD_AUTOFLUOR_MASK = 84,
    ES_LOW_MEMORY_SEQUENCE = 85,
    ES_LOW_MEMORY_DATASET = 86,
    ES_INVALID_VOLUME_DATA = 87,
    ES_NO_CLICKNUMBERS = 88,
    ES_STATUS_COUNT = 89
};

// The kind of an image. Values 0 to 8 and 12 are fixed by the files the
// application writes (section names and stored file names depend on them).
enum tag_eimagetype : int {
    IT_PHOTOGRAPH = 0,
    IT_LUMINESCENT = 1,
    IT_READBIAS = 2,
    IT_READSIGMA = 3,
    IT_DARKCHARGE = 4,
    IT_READBIASONLY = 5,
    IT_REFERENCE = 6,
    IT_STRUCTURE = 7,
    IT_FLUORESCENT_BKG = 8,
    IT_LUMINESCENT_A = 9,
    IT_LUMINESCENT_B = 10,
    IT_READBSIGMA = 11,
    IT_XRAY = 12,
    IT_FLUORESCENT_REFERENCE = 13,
    IT_SAVED_LUMINESCENT_CORRECTED = 14,
    IT_BACKGROUND_CLICK = 15,
    IT_ADAPTIVE_FLUORESCENT_BKG = 16,
    IT_SATURATION_MAP = 17,
    IT_HEIGHT_MAP = 18,
    IT_PHOTO_MASK = 19,
    IT_IMAGETYPE_COUNT = 20
};

// Element type of raw image or curve data; sizeInBytes() gives the element size.
enum ZOSDataTypes : int {
    ZOS_DT_UNKNOWN = 0,
    ZOS_DT_UINT8 = 1,   // 1 byte
    ZOS_DT_UINT16 = 2,  // 2 bytes
    ZOS_DT_INT32 = 3,   // 4 bytes
    ZOS_DT_FLOAT = 4,   // 4 bytes
    ZOS_DT_DOUBLE = 5   // 8 bytes
};

// Colour tables. Members 15 to 22 have no name of their own in this library.
enum ZOS_COLORTABLE_TYPES : int {
    ZOS_CT_GRAYS = 0,
    ZOS_CT_RAINBOW = 1,
    ZOS_CT_YELLOWHOT = 2,
    ZOS_CT_BLUEHOT = 3,
    ZOS_CT_BLUEREDGREEN = 4,
    ZOS_CT_PLANETEARTH = 5,
    ZOS_CT_TERRAIN = 6,
    ZOS_CT_RAINBOW2 = 7,
    ZOS_CT_RED = 8,
    ZOS_CT_GREEN = 9,
    ZOS_CT_BLUE = 10,
    ZOS_CT_CYAN = 11,
    ZOS_CT_YELLOW = 12,
    ZOS_CT_MAGENTA = 13,
    ZOS_CT_ORANGE = 14,
    ZOS_CT_UNNAMED_15 = 15,
    ZOS_CT_UNNAMED_16 = 16,
    ZOS_CT_UNNAMED_17 = 17,
    ZOS_CT_UNNAMED_18 = 18,
    ZOS_CT_UNNAMED_19 = 19,
    ZOS_CT_UNNAMED_20 = 20,
    ZOS_CT_UNNAMED_21 = 21,
    ZOS_CT_UNNAMED_22 = 22,
    ZOS_CT_BLUEYELLOW = 23,
    ZOS_CT_GREENPINK = 24,
    ZOS_CT_EOSB = 25,
    ZOS_CT_JET = 26
};

// The older numbering of the colour look-up tables: 0 to 14 as in
// ZOS_COLORTABLE_TYPES, 15 stands for Jet (ZOS_CT_JET).
enum tag_ecolortable : int {
    CLUT_GRAYS = 0,
    CLUT_RAINBOW = 1,
    CLUT_YELLOWHOT = 2,
    CLUT_BLUEHOT = 3,
    CLUT_BLUEREDGREEN = 4,
    CLUT_PLANETEARTH = 5,
    CLUT_TERRAIN = 6,
    CLUT_RAINBOW2 = 7,
    CLUT_RED = 8,
    CLUT_GREEN = 9,
    CLUT_BLUE = 10,
    CLUT_CYAN = 11,
    CLUT_YELLOW = 12,
    CLUT_MAGENTA = 13,
    CLUT_ORANGE = 14,
    CLUT_JET = 15
};

// The image kinds as texts. Namespace-scope const objects have internal
// linkage: each source file owns its own copy, as every shared text does.

// Image-kind labels (click-info sections and statistics files)
const QString ZO_IMAGE_LUMINESCENT_IMAGE = QStringLiteral("luminescent image");
const QString ZO_IMAGE_LUMINESCENT_A_IMAGE = QStringLiteral("luminescent A image");
const QString ZO_IMAGE_LUMINESCENT_B_IMAGE = QStringLiteral("luminescent B image");
const QString ZO_IMAGE_PHOTOGRAPHIC_IMAGE = QStringLiteral("photographic image");
const QString ZO_IMAGE_X_RAY_IMAGE = QStringLiteral("x-ray image");
const QString ZO_IMAGE_STRUCTURE_IMAGE = QStringLiteral("structure image");
const QString ZO_IMAGE_READBIAS_IMAGE = QStringLiteral("readbias image");
const QString ZO_IMAGE_READSIGMA_IMAGE = QStringLiteral("readsigma image");
const QString ZO_IMAGE_READBSIGMA_IMAGE = QStringLiteral("readbsigma image");
const QString ZO_IMAGE_READBIASONLY_IMAGE = QStringLiteral("readbiasonly image");
const QString ZO_IMAGE_DARKCHARGE_IMAGE = QStringLiteral("darkcharge image");
const QString ZO_IMAGE_REFERENCE_IMAGE = QStringLiteral("reference image");
const QString ZO_IMAGE_FLUORESCENT_BKG_IMAGE = QStringLiteral("fluorescent bkg image");
const QString ZO_IMAGE_FLUORESCENT_REFERENCE_IMAGE = QStringLiteral("fluorescent reference image");
const QString ZO_IMAGE_SAVED_LUMINESCENT_CORRECTED_IMAGE = QStringLiteral("saved luminescent corrected image");
const QString ZO_IMAGE_BACKGROUND_CLICK = QStringLiteral("background click");
const QString ZO_IMAGE_ADAPTIVE_FLUORESCENT_BKG_IMAGE = QStringLiteral("Adaptive Fluorescent Bkg Image");

// Short image-kind names for lists and menus
const QString ZO_KIND_PHOTOGRAPH = QStringLiteral("Photograph");
const QString ZO_KIND_LUMINESCENT = QStringLiteral("Luminescent");
const QString ZO_KIND_LUMINESCENT_A = QStringLiteral("Luminescent A");
const QString ZO_KIND_LUMINESCENT_B = QStringLiteral("Luminescent B");
const QString ZO_KIND_READ_BIAS = QStringLiteral("Read Bias");
const QString ZO_KIND_READ_SIGMA = QStringLiteral("Read Sigma");
const QString ZO_KIND_BIAS = QStringLiteral("Bias");
const QString ZO_KIND_REFERENCE = QStringLiteral("Reference");
const QString ZO_KIND_STRUCTURE = QStringLiteral("Structure");
const QString ZO_KIND_FLUORESCENT_BKG = QStringLiteral("Fluorescent Bkg");
const QString ZO_KIND_FL_REFERENCE = QStringLiteral("FL Reference");
const QString ZO_KIND_SATURATION_MAP = QStringLiteral("Saturation Map");
const QString ZO_KIND_HEIGHT_MAP = QStringLiteral("Height Map");
const QString ZO_KIND_PHOTO_MASK = QStringLiteral("Photo Mask");

// The click-info section name of an image kind, indexed by the enumeration's
// value; an empty text for a value outside the enumeration.
inline QString imageTypeSectionName(int type)
{
    switch (type) {
    case IT_PHOTOGRAPH: return ZO_IMAGE_PHOTOGRAPHIC_IMAGE;
    case IT_LUMINESCENT: return ZO_IMAGE_LUMINESCENT_IMAGE;
    case IT_READBIAS: return ZO_IMAGE_READBIAS_IMAGE;
    case IT_READSIGMA: return ZO_IMAGE_READSIGMA_IMAGE;
    case IT_DARKCHARGE: return ZO_IMAGE_DARKCHARGE_IMAGE;
    case IT_READBIASONLY: return ZO_IMAGE_READBIASONLY_IMAGE;
    case IT_REFERENCE: return ZO_IMAGE_REFERENCE_IMAGE;
    case IT_STRUCTURE: return ZO_IMAGE_STRUCTURE_IMAGE;
    case IT_FLUORESCENT_BKG: return ZO_IMAGE_FLUORESCENT_BKG_IMAGE;
    case IT_LUMINESCENT_A: return ZO_IMAGE_LUMINESCENT_A_IMAGE;
    case IT_LUMINESCENT_B: return ZO_IMAGE_LUMINESCENT_B_IMAGE;
    case IT_READBSIGMA: return ZO_IMAGE_READBSIGMA_IMAGE;
    case IT_XRAY: return ZO_IMAGE_X_RAY_IMAGE;
    case IT_FLUORESCENT_REFERENCE: return ZO_IMAGE_FLUORESCENT_REFERENCE_IMAGE;
    case IT_SAVED_LUMINESCENT_CORRECTED: return ZO_IMAGE_SAVED_LUMINESCENT_CORRECTED_IMAGE;
    case IT_BACKGROUND_CLICK: return ZO_IMAGE_BACKGROUND_CLICK;
    case IT_ADAPTIVE_FLUORESCENT_BKG: return ZO_IMAGE_ADAPTIVE_FLUORESCENT_BKG_IMAGE;
    case IT_SATURATION_MAP: return ZO_KIND_SATURATION_MAP;
    case IT_HEIGHT_MAP: return ZO_KIND_HEIGHT_MAP;
    case IT_PHOTO_MASK: return ZO_KIND_PHOTO_MASK;
    default: return QString();
    }
}
