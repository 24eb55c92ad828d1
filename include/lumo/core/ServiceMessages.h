#ifndef LUMO_CORE_SERVICEMESSAGES_H
#define LUMO_CORE_SERVICEMESSAGES_H

/// The classes of other libraries that the interface names; their headers are for its implementation.

namespace wirecall {
class RpcChannel;
class RpcController;
} // namespace wirecall

namespace forgeserver {
class AnalyzeImageRsp;
class AnalyzeImagesRsp;
class FileCopyFromDbRsp;
class FileCopyToDbRsp;
} // namespace forgeserver

namespace ledgerserver {
class CheckDataBean;
class CommentImageBean;
class CommentInfoBean;
class DataAddressBean;
class DataSrcAdsBean;
class DataSrcBean;
class DataSrcControlBean;
class DataSrcControlInfoBean;
class DataSrcDemBean;
class DataSrcDlgBean;
class DataSrcDomBean;
class DataSrcDsmBean;
class DataSrcPhotoBean;
class DataSrcSatBean;
class DataSrcTypeBean;
class FileTableBean;
class SrcTableBean;
class VersionTableBean;
} // namespace ledgerserver

namespace google {
namespace protobuf {
class Message;
}
} // namespace google

#endif
