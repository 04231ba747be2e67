#pragma once

// Symbols are hidden by default; what a host or a plug-in may link against carries this mark.
#define KEL_EXPORT __attribute__((visibility("default")))
