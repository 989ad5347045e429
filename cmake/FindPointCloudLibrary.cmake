# The two parts of the Point Cloud Library that are used, as imported targets
#   PointCloudLibrary::common   point types, transforms, principal component analysis (headers and library)
#   PointCloudLibrary::io       PCD files
#
# The package file of the library itself also looks for the whole visualisation stack (VTK, Qt, OpenNI) and adds it to
# every link; nothing of that is needed here.
find_package(PkgConfig QUIET)
pkg_check_modules(PC_PCL_COMMON QUIET pcl_common)
find_path(PointCloudLibrary_INCLUDE_DIR pcl/point_cloud.h HINTS ${PC_PCL_COMMON_INCLUDE_DIRS})
find_path(PointCloudLibrary_EIGEN_INCLUDE_DIR Eigen/Core HINTS ${PC_PCL_COMMON_INCLUDE_DIRS} PATH_SUFFIXES eigen3)
find_library(PointCloudLibrary_COMMON_LIBRARY pcl_common HINTS ${PC_PCL_COMMON_LIBRARY_DIRS})
find_library(PointCloudLibrary_IO_LIBRARY pcl_io HINTS ${PC_PCL_COMMON_LIBRARY_DIRS})
set(PointCloudLibrary_VERSION "${PC_PCL_COMMON_VERSION}")

include(FindPackageHandleStandardArgs)
find_package_handle_standard_args(PointCloudLibrary
  REQUIRED_VARS PointCloudLibrary_COMMON_LIBRARY PointCloudLibrary_IO_LIBRARY
                PointCloudLibrary_INCLUDE_DIR PointCloudLibrary_EIGEN_INCLUDE_DIR
  VERSION_VAR PointCloudLibrary_VERSION)

if(PointCloudLibrary_FOUND AND NOT TARGET PointCloudLibrary::common)
  add_library(PointCloudLibrary::common SHARED IMPORTED)
  set_target_properties(PointCloudLibrary::common PROPERTIES
    IMPORTED_LOCATION "${PointCloudLibrary_COMMON_LIBRARY}"
    INTERFACE_INCLUDE_DIRECTORIES "${PointCloudLibrary_INCLUDE_DIR};${PointCloudLibrary_EIGEN_INCLUDE_DIR}")
  add_library(PointCloudLibrary::io SHARED IMPORTED)
  set_target_properties(PointCloudLibrary::io PROPERTIES
    IMPORTED_LOCATION "${PointCloudLibrary_IO_LIBRARY}"
    INTERFACE_LINK_LIBRARIES PointCloudLibrary::common)
endif()
