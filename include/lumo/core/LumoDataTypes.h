#ifndef LUMO_CORE_LUMODATATYPES_H
#define LUMO_CORE_LUMODATATYPES_H

/// Result of CLumoDataMgr::initDataMgr.
enum ENUM_INIT_ERROR_CODE
{
    INIT_SUCCESS = 0,
    INIT_ERROR_CHANNEL_NULL = 1,    ///< one of the two channels is null
    INIT_ERROR_TRANSFER_CLIENT = 2, ///< the bulk transfer client did not start
    INIT_ERROR_COMPANY = 3,         ///< the company number could not be resolved
    INIT_ERROR_ROLE = 4             ///< the user name could not be resolved
};

/// Result of the query methods.
enum ENUM_RET_TYPE
{
    RET_FAILED = 0,  ///< the call failed or the service reported an error
    RET_SUCCESS = 1, ///< the answer is in the out-parameter
    RET_NULL = 2     ///< nothing matches
};

/// Kinds of catalogue records; the numbering is shared with the services.
enum ENUM_DATA_TYPE
{
    DATA_TYPE_DISK = 0,
    DATA_TYPE_FOLDER = 1,
    DATA_TYPE_FILE = 2,
    DATA_TYPE_DATA = 3, ///< data project
    DATA_TYPE_TYPE = 4, ///< data type within a project
    DATA_TYPE_KF_IMAGE = 5,
    DATA_TYPE_SAT_IMAGE = 6,
    DATA_TYPE_ADS_IMAGE = 7,
    DATA_TYPE_CTRL_FILE = 8,
    DATA_TYPE_CTRL_POINT = 9,
    DATA_TYPE_DEM = 10,
    DATA_TYPE_DSM = 11,
    DATA_TYPE_DOM = 12,
    DATA_TYPE_DLG = 13
};

#endif
