#pragma once

#include <osg/Camera>
#include <osg/MatrixTransform>
#include <osg/NodeCallback>
#include <osg/TextureCubeMap>
#include <osg/Vec3d>
#include <osg/ref_ptr>

namespace orbisk {

/// Where a skybox stands and through whose eye it is seen.
struct SkyboxPlacement {
    osg::Vec3d position; ///< world frame
    osg::ref_ptr<osg::Camera> camera;
};

/// Fills `target`, releasing the camera it held before.
void copyPlacement(SkyboxPlacement& target, osg::Camera* camera, const osg::Vec3d& position);

/// The sky's six faces, read from the folder `image/SkyBoxMap` of the working directory. A face
/// whose image is missing or damaged stays without one.
osg::ref_ptr<osg::TextureCubeMap> buildCubeMapTexture();

/// A sky around the eye: a unit sphere, textured and unlit, under a transform that a
/// `TransformCallback` keeps around the placement. Drawn after the opaque part of the scene.
osg::ref_ptr<osg::MatrixTransform> buildSkybox(const SkyboxPlacement& placement);

/// Scales the skybox to ten times the eye's distance from the placement, so that it always
/// surrounds the eye, and turns its cube map's up direction from y to z. Main thread.
class TransformCallback : public osg::NodeCallback {
public:
    explicit TransformCallback(const SkyboxPlacement& placement);

    void operator()(osg::Node* node, osg::NodeVisitor* visitor) override;

protected:
    ~TransformCallback() override;

private:
    SkyboxPlacement m_placement;
};

} // namespace orbisk
