/// What the shared bodies in *.inc need, included ahead of a library's own namespace.
#pragma once

#include "foundation/engines/jpeg/jpeg_coders.h"
#include "foundation/engines/jpeg/jpeg_samples.h"
#include "foundation/engines/jpeg/zigzag.h"
#include "foundation/types/cancellation.h"
#include "foundation/types/limits.h"
#include "foundation/types/progress.h"

#include <algorithm>
#include <array>
#include <csetjmp>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <span>
#include <vector>
