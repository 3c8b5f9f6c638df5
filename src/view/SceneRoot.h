#pragma once

#include "view/ViewCamera.h"

#include <osg/Camera>
#include <osg/Node>
#include <osg/Switch>
#include <osg/ref_ptr>

namespace orbisk {

/// The scene around the model. Under the root switch stand the model switch (0), the skybox (1)
/// and three empty groups (2 to 4); under the model switch the slot of the measurement drawing
/// (0), the model (1) and two light sources (2, 3). Main thread.
class SceneRoot {
public:
    enum RootChild : unsigned int { modelSwitchChild, skyboxChild };
    enum ModelSwitchChild : unsigned int { drawingSlot, modelChild, upperLight, lowerLight };

    SceneRoot();

    /// Builds the scene anew around `model` and optimises it. Nothing may be drawing it meanwhile.
    /// @param camera whose eye the sky surrounds.
    /// @return the view from above that shows the whole model.
    HomeView rebuild(osg::Node& model, osg::Camera& camera, bool skyShown);

    void setSkyShown(bool shown);

    /// Empties the root. The sky holds the camera that holds the scene: without this both leak.
    void clear();

    osg::Switch* root() const { return m_root.get(); }

    /// Null before the first model.
    osg::Switch* modelSwitch() const { return m_modelSwitch.get(); }

private:
    void addLights(double modelRadius);

    osg::ref_ptr<osg::Switch> m_root;
    osg::ref_ptr<osg::Switch> m_modelSwitch;
};

} // namespace orbisk
