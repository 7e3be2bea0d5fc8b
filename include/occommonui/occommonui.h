#pragma once

#include <occommonui/CustomProperty.h>
#include <occommonui/Version.h>
