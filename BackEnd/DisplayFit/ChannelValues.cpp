#include "DisplayFit/ChannelValues.h"

#include "Configuration/ProjectorConfig.h"

namespace Veltrani::DisplayFit {

ChannelValues ChannelValues::of(const ProjectorConfig& projector) {
    ChannelValues values;
    values.position = projector.getPosition();
    values.orientation = {projector.getOrientationZ(), projector.getOrientationX(), projector.getOrientationY()};
    values.frustum = {projector.getFrustumLeft(), projector.getFrustumRight(), projector.getFrustumBottom(),
                      projector.getFrustumTop()};
    values.area = {projector.getScreenLeft(), projector.getScreenRight(), projector.getScreenBottom(),
                   projector.getScreenTop()};
    return values;
}

}  // namespace Veltrani::DisplayFit
