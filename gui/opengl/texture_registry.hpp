#pragma once

#include <GL/gl.h>

#include <mutex>
#include <vector>

namespace vanta::gui {

/// The textures of a renderer, shared with the bitmaps that they belong to. A bitmap may go on any thread, a
/// texture only where the context is current: until then it waits here.
class TextureRegistry {
public:
    void add(GLuint texture);
    /// Nobody draws it any more. Does nothing for one that has been taken already.
    void retire(GLuint texture);
    /// Those that wait to be deleted.
    std::vector<GLuint> takeRetired();
    std::vector<GLuint> takeAll();

private:
    std::mutex mutex_;
    std::vector<GLuint> live_;
    std::vector<GLuint> retired_;
};

}  // namespace vanta::gui
