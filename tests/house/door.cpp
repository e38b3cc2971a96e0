#include "scene/SceneDriver.h"
