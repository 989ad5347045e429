#pragma once

#include "DisplayLight/LitPicture.h"

/// A place that one channel lights, with its own white and its own content.
inline Veltrani::DisplayLight::LitPlace litPlace(float weight = 1, float shift = 0) {
    Veltrani::DisplayLight::LitPlace place;
    place.light = {weight, weight, weight};
    place.weight = weight;
    place.shift = shift;
    place.channels = 1;
    place.isOnScreen = true;
    return place;
}
