# What the libraries are built with. Boost and RapidJSON appear in the public headers; glog and the FFmpeg headers
# do not reach a consumer through the targets (FFmpeg's header is included by CodecMaps.h from the system's path).

find_package(Boost 1.74 REQUIRED)
find_package(glog REQUIRED)
find_path(ZELNOR_RAPIDJSON_INCLUDE_DIR rapidjson/document.h REQUIRED)
find_path(ZELNOR_AVCODEC_INCLUDE_DIR libavcodec/avcodec.h REQUIRED)
mark_as_advanced(ZELNOR_RAPIDJSON_INCLUDE_DIR ZELNOR_AVCODEC_INCLUDE_DIR)
