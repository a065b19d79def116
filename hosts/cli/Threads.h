// Threads that can be had, on systems that grant a process only so many of them.
#pragma once

namespace cli {

/// Threads that one picture at work may have at once, the one that works on it among them.
int ThreadsOfOnePicture();

/// How many pictures, 1 to `wanted`, may be worked on at once so that each gets all the threads it asks for: the
/// library's, libvips' and those of this command. Where not even one does, library and libvips are told to do with the
/// fewest. Throws `std::runtime_error` where these cannot be had either.
int PicturesAtOnce(int wanted);

/// Throws `PictureError` if the library, in its last call on this thread, left a plane undone for want of a thread.
void RequireAllPlanes();

} // namespace cli
