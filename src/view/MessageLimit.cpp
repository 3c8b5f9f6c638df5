#include "view/MessageLimit.h"

#include <osg/Notify>
#include <osg/ref_ptr>

#include <atomic>

namespace orbisk {

namespace {

std::atomic<int> messageCount{0};

class MessageLimit : public osg::NotifyHandler {
public:
    explicit MessageLimit(osg::NotifyHandler* former) : m_former(former) {}

    void notify(osg::NotifySeverity severity, const char* message) override {
        // The library says nothing now and then.
        if (!message || !*message)
            return;
        const int number = ++messageCount;
        if (number <= mostMessages)
            m_former->notify(severity, message);
        else if (number == mostMessages + 1)
            m_former->notify(severity, "Further messages are left out.\n");
        else
            messageCount = mostMessages + 1;
    }

private:
    osg::ref_ptr<osg::NotifyHandler> m_former;
};

} // namespace

void limitMessages() {
    osg::setNotifyHandler(new MessageLimit(osg::getNotifyHandler()));
}

void startCountingMessages() {
    messageCount = 0;
}

} // namespace orbisk
