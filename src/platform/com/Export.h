#pragma once

/// Marks what a shared library shows to others; everything else stays inside it.
#define KV_EXPORT __attribute__((visibility("default")))
