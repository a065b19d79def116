// How many threads the system lets this process start.
#pragma once

namespace cli {

/// Threads that one picture at work may have at once, the one that works on it among them.
int ThreadsOfOnePicture();

/// How many pictures, 1 to `wanted`, may be worked on at once so that each gets all the threads it asks for: the
/// library's, libvips' and those of this command. Where there are too few for one picture, the library and libvips are
/// told to use as few as they can. Throws `std::runtime_error` if even those cannot be started.
int PicturesAtOnce(int wanted);

/// Throws `PictureError` if the library, in its last call on this thread, left a plane undone for want of a thread.
void RequireAllPlanes();

} // namespace cli
