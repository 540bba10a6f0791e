#pragma once

/// Registers the icons and the animation under ":/ressources/". A static library's resources are
/// not registered by themselves; whoever shows one calls this first. More calls change nothing.
void initRessources();
