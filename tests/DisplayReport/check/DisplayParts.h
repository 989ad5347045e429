#pragma once

#include <string>

/// The parts that the displays of the tests are written from.
namespace sound {

inline std::string display(const std::string& screen, const std::string& targets, const std::string& projectors) {
    return "<Display version='1' lengthUnit='m' angleUnit='deg'>\n<Units native='m'/>\n" + screen + "\n" + targets +
           "\n<Projectors>\n" + projectors + "</Projectors>\n</Display>\n";
}

/// A projector with a device of its own; `number` is below 100.
inline std::string projector(int number, const std::string& name, const std::string& elements,
                             const std::string& resolution = "<Resolution width='1920' height='1200'/>") {
    const std::string digits = (number < 10 ? "0" : "") + std::to_string(number);
    return "<Projector id='P" + digits + "'><Name>" + name + "</Name>" + resolution +
           "<Device><Device type='PJLink' mac='02:00:00:00:00:" + digits + "' host='192.0.2." + std::to_string(number) +
           "' port='4352'/></Device>" + elements + "</Projector>\n";
}

inline std::string area(const std::string& left, const std::string& right, const std::string& bottom,
                        const std::string& top) {
    return "<ScreenArea left='" + left + "' right='" + right + "' bottom='" + bottom + "' top='" + top + "'/>";
}

inline std::string layout(const std::string& xMin, const std::string& xMax, const std::string& yMin,
                          const std::string& yMax) {
    return "<Layout xMin='" + xMin + "' xMax='" + xMax + "' yMin='" + yMin + "' yMax='" + yMax + "'/>";
}

inline std::string turned(const std::string& z, const std::string& x, const std::string& y) {
    return "<Orientation z='" + z + "' x='" + x + "' y='" + y + "'/>";
}

inline std::string frustum(const std::string& left, const std::string& right, const std::string& bottom,
                           const std::string& top) {
    return "<Frustum left='" + left + "' right='" + right + "' bottom='" + bottom + "' top='" + top + "'/>";
}

inline std::string at(const std::string& x, const std::string& y, const std::string& z) {
    return "<Position x='" + x + "' y='" + y + "' z='" + z + "'/>";
}

inline std::string of(const std::string& type) {
    return "<TargetData type='" + type + "'/>";
}

/// Two points, as text.
inline std::string cloud(const std::string& first, const std::string& second) {
    return "VERSION 0.7\nFIELDS x y z\nSIZE 4 4 4\nTYPE F F F\nCOUNT 1 1 1\nWIDTH 2\nHEIGHT 1\nVIEWPOINT 0 0 0 1 0 0 "
           "0\nPOINTS 2\nDATA ascii\n" +
           first + "\n" + second + "\n";
}

/// Six metres wide, two and a half high, five metres ahead.
inline const std::string WALL =
    "<Screen shape='Flat'><EyePoint x='0' y='0' z='1.7'/><Centre x='0' y='5' z='1.65'/>"
    "<Size width='6' height='2.5'/></Screen>";

/// A lens of 180 degrees, whose circle fills a square picture.
inline const std::string FISHEYE =
    "%YAML:1.0\n---\nimage_width: 2400\nimage_height: 2400\ncamera_matrix: !!opencv-matrix\n   rows: 3\n   cols: 3\n"
    "   dt: d\n   data: [ 763.9, 0., 1199.5, 0., 763.9, 1199.5, 0., 0., 1. ]\n"
    "distortion_coefficients: !!opencv-matrix\n   rows: 4\n   cols: 1\n   dt: d\n   data: [ 0., 0., 0., 0. ]\n";

}  // namespace sound
