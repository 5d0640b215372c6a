// The door of the module: INI files kept in memory and the settings in Quarda.ini.
#pragma once

#include "Config.h"
#include "ConfigFile.h"
