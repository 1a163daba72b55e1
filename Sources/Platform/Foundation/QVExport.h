#pragma once

/// Marks what the shared library shows to hosts; everything else is hidden.
#define QV_EXPORT __attribute__((visibility("default")))
