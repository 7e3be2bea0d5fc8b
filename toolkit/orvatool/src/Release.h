#pragma once

// What gwrelease() frees. Everything is loaded anew when it is asked for again.
void ReleaseImages();
void ReleaseCatalogues();
