# The part of OpenCV that fits lenses, for tests and benchmarks alone. Its packages bring no CMake files of their own.
include_guard(GLOBAL)
find_path(SM_OPENCV_INCLUDE_DIR opencv2/calib3d.hpp PATH_SUFFIXES opencv4 REQUIRED)
find_library(SM_OPENCV_CALIB3D_LIBRARY opencv_calib3d REQUIRED)
find_library(SM_OPENCV_CORE_LIBRARY opencv_core REQUIRED)
add_library(sm_opencv_calibration INTERFACE)
target_include_directories(sm_opencv_calibration SYSTEM INTERFACE "${SM_OPENCV_INCLUDE_DIR}")
target_link_libraries(sm_opencv_calibration INTERFACE "${SM_OPENCV_CALIB3D_LIBRARY}" "${SM_OPENCV_CORE_LIBRARY}")
