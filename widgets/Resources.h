#pragma once

// The icons and pictures live in the static library tivora_resources, whose
// registration the linker would drop unless someone references it. The window
// and every test that paints call this once before the first QIcon is made.
void initResources();
