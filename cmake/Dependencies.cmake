# Every third-party package, in one place. Their Debian packages are listed in packages.txt.
find_package(log4cxx 1.0 REQUIRED)
find_package(PointCloudLibrary 1.11 REQUIRED)
find_package(embree 3.13 REQUIRED)
find_package(LibXml2 2.9 REQUIRED)
find_package(OpenSSL 3.0 REQUIRED COMPONENTS Crypto)
find_package(utf8cpp REQUIRED)
find_package(CLI11 2.1 REQUIRED)
find_package(nlohmann_json 3.11 REQUIRED)
