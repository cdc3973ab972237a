// FunctionNode: graph edits with their cycle check, the two phases of a
// propagation as seen by one node (shallBeUpdated, update), lazy evaluation
// (requestUpdate) and recompute with its error and time screening.
#include "sysevent/graph/function_node.h"

#include <cstdint>
#include <mutex>
#include <new>
#include <set>
#include <vector>

#include "host/runtime/clock.h"
#include "host/runtime/log.h"
#include "host/runtime/time.h"
#include "sysevent/graph/expression_repository.h"
#include "sysevent/graph/proxy_repository.h"

namespace VX::SysEvent {

// A propagation line, written only when `traced` (LOG_ADMITS(3), asked once
// per step) says the monitor takes it: untraced, a step pays one check.
#define TRACE_STEP(...)                           \
    do {                                          \
        if (traced) SYSEVENT_LOG(3, __VA_ARGS__); \
    } while (0)

namespace {

// Sum of m_pendingUpdates over all function nodes; guarded by the engine lock.
uint64_t s_pendingUpdatesInGraph = 0;

// The value a failing compute() leaves in the node: the value of the subtype
// an engine code names (an error for errToXCode of an error, but any subtype
// counts), "#ERR!" for any other code and for an engine code beyond the
// subtypes, which has no value to stand for.
Value errorValueOf(const XCode& code) {
    const uint32_t c = code.getValue();
    if ((c & 0xFF000000u) == (ENGINE_ERROR_BASE & 0xFF000000u)) {
        const uint32_t st = c & 0x00FFFFFFu;
        if (st <= DST_ERR_GENERIC) return Value(static_cast<DataSubType>(st));
    }
    return Value(DST_ERR_GENERIC);
}

// The formatting of recompute's trace output lives out of line: recompute
// recurses once per dirty level of a lazily read chain, and the temporaries
// of the formatting would otherwise enlarge every one of those stack frames.
[[gnu::noinline]] void appendArgumentText(String& text, size_t index, const Value& v) {
    if (index) text += ", ";
    text += v.toString();
}

[[gnu::noinline, gnu::cold]] void traceRecompute(const FunctionNode& node,
                                                 const String& argumentText, const Event& result) {
    SYSEVENT_LOG(3, "[%s] %s(%s) -> %s (during %s on %s)", node.getLogName().c_str(),
                 node.getFunctionName().c_str(), argumentText.c_str(),
                 result.value.toString().c_str(),
                 Value(result.end - result.start, DST_REL_TIME).toString().c_str(),
                 VX::Clock(result.end, 0).toString(VX::Clock::FORMAT_LOG).c_str());
}

[[gnu::noinline]] void setErrorValue(Value& v, const Value& error) {
    v = error;
}

[[gnu::noinline]] void setErrorValue(Value& v, DataSubType st) {
    v = Value(st);
}

// The one copy of a parameter text. There are as many distinct texts as
// function factories, against one per node otherwise. Nodes are made from
// any thread (tests build them without the engine lock), hence the mutex.
// Never freed: nodes may outlive static destruction.
const String* sharedParameterText(const String& text) {
    if (text.isEmpty()) return &String::s_empty;
    static std::mutex mutex;
    static auto* texts = new std::set<String>();
    std::lock_guard<std::mutex> held(mutex);
    return &*texts->insert(text).first;
}

// A walk's stack: the first levels on the C stack, deeper ones on the heap.
// Each walk has its own, so a walk started from inside another (an observer
// reading a value) leaves the outer one's frames alone.
template <typename Frame>
class WalkStack {
public:
    void push(const Frame& f) {
        if (m_size < INLINE) {
            m_inline[m_size] = f;
        } else {
            // A walk that leaves the inline frames is a long one: grow in
            // few large steps rather than doubling from one frame.
            if (m_spill.capacity() == 0) m_spill.reserve(SPILL);
            m_spill.push_back(f);
        }
        ++m_size;
    }
    Frame& top() { return m_size <= INLINE ? m_inline[m_size - 1] : m_spill.back(); }
    void pop() {
        if (m_size > INLINE) m_spill.pop_back();
        --m_size;
    }
    bool empty() const { return m_size == 0; }

private:
    static constexpr size_t INLINE = 16;
    static constexpr size_t SPILL = 256;
    Frame m_inline[INLINE];
    std::vector<Frame> m_spill;
    size_t m_size = 0;
};

struct AskFrame {
    FunctionNode* node;
    size_t next;  // the next parent to ask
    bool interested;
};
struct DeliverFrame {
    FunctionNode* node;
    size_t next;  // the next parent to update
    bool result;
};
struct ReadFrame {
    FunctionNode* node;
    size_t next;  // the next child to bring up to date
};

// One graph walk that visits each node once: the nodes still to expand,
// and the set of nodes reached so far, an open-addressed table of pointers.
// A walk never calls out of the graph, so two per thread serve every cycle
// check; their memory is kept between checks unless a walk grew them large.
class NodeWalk {
public:
    static NodeWalk& scratch(int which = 0) {
        thread_local NodeWalk s_walks[2];
        return s_walks[which];
    }
    void start(const Node* from) {
        m_toExpand.clear();
        reach(from);
    }
    // Queues `n` for expansion unless it was reached before.
    void reach(const Node* n) {
        if ((m_count + 1) * 2 > m_slots.size()) grow();
        size_t i = slotOf(n);
        while (m_slots[i]) {
            if (m_slots[i] == n) return;
            i = (i + 1) & (m_slots.size() - 1);
        }
        m_slots[i] = n;
        m_used.push_back(static_cast<uint32_t>(i));
        ++m_count;
        m_toExpand.push_back(n);
    }
    // The next node to expand; null when the closure is exhausted.
    const Node* next() {
        if (m_toExpand.empty()) return nullptr;
        const Node* n = m_toExpand.back();
        m_toExpand.pop_back();
        return n;
    }
    // Forgets the walk and returns `answer`.
    bool done(bool answer) {
        if (m_slots.size() > kKeptSlots) {
            m_slots = {};
            m_used = {};
            m_toExpand = {};
        } else {
            for (uint32_t i : m_used) m_slots[i] = nullptr;
            m_used.clear();
            m_toExpand.clear();
        }
        m_count = 0;
        return answer;
    }

private:
    static constexpr size_t kKeptSlots = 4096;

    size_t slotOf(const Node* n) const {
        const auto h =
            static_cast<uint64_t>(reinterpret_cast<uintptr_t>(n)) * 0x9E3779B97F4A7C15ull;
        return static_cast<size_t>(h >> 32) & (m_slots.size() - 1);
    }
    void grow() {
        std::vector<const Node*> old(m_slots.size() ? m_slots.size() * 2 : 64, nullptr);
        old.swap(m_slots);
        m_used.clear();
        for (const Node* n : old) {
            if (!n) continue;
            size_t i = slotOf(n);
            while (m_slots[i]) i = (i + 1) & (m_slots.size() - 1);
            m_slots[i] = n;
            m_used.push_back(static_cast<uint32_t>(i));
        }
    }

    std::vector<const Node*> m_slots;  // null: free
    std::vector<uint32_t> m_used;      // occupied slots, for a cheap reset
    std::vector<const Node*> m_toExpand;
    size_t m_count = 0;
};

// Nodes whose release is due, while a release is running on this thread:
// a dying child queues its own children here instead of releasing them from
// inside its destructor, so that releasing a long chain nests nothing. Made
// when a release first nests and dropped when it is drained.
thread_local VXVector<Node*>* t_dueReleases = nullptr;
thread_local bool t_releasing = false;

}  // namespace

[[gnu::noinline]] void FunctionNode::computeInto(Event& result) {
    // Reading an argument may recompute a dirty child, but never this node,
    // so the flag belongs to this compute alone.
    m_argumentMissing = false;
    const XCode rc = compute(result);
    if (m_argumentMissing) {
        m_argumentMissing = false;
        result.value = Value(DST_ERR_VAL);
    } else if (rc.isErr()) {
        result.value = errorValueOf(rc);
    }
}

const Event& FunctionNode::missingArgument() const {
    static const Event s_undefined;
    m_argumentMissing = true;
    return s_undefined;
}

FunctionNode::FunctionNode(const String& functionName, const String& parameterText)
    : Node(String()),
      m_functionName(functionName),
      m_parameterText(sharedParameterText(parameterText)) {
    m_kind = KIND_FUNCTION;
    m_dirty = true;
}

FunctionNode::~FunctionNode() {
    // The sharing tables forget the node first, while its children still
    // give it its key.
    if (m_listings & LISTED_AS_PROXY) ProxyRepository::INSTANCE()->unlist(this, m_functionName);
    if (m_listings & LISTED_AS_EXPRESSION) {
        // A destructor must not throw: without memory for the key, the table
        // is searched for the node instead.
        String key;
        try {
            key = m_kind == KIND_PROXY ? m_functionName : FunctionNode::getNormalizedExpression();
        } catch (const std::bad_alloc&) {
        }
        ExpressionRepository::INSTANCE()->unlist(this, key);
    }
    m_listings = 0;
    s_pendingUpdatesInGraph -= m_pendingUpdates;
    for (const VXLWPtr<Node>& child : m_children) child->removeParent(this);
    if (t_releasing) {
        // Inside another node's release: queue the children, last first, so
        // that they are released in argument order, each one's own children
        // before the next one, as nested destructors would release them.
        if (!t_dueReleases) t_dueReleases = new VXVector<Node*>();
        for (size_t i = m_children.size(); i-- > 0;) {
            Node* child = m_children[i].get();
            child->addRef();
            t_dueReleases->push_back(child);
        }
        m_children.clear();
        return;
    }
    t_releasing = true;
    for (VXLWPtr<Node>& child : m_children) {
        child = nullptr;
        while (t_dueReleases && !t_dueReleases->empty()) {
            Node* due = t_dueReleases->back();
            t_dueReleases->pop_back();
            due->release();
        }
    }
    delete t_dueReleases;
    t_dueReleases = nullptr;
    t_releasing = false;
}

const String& FunctionNode::getName() const {
    // Made when first asked for: few nodes are ever asked, and the text
    // would be a heap block of its own in every one.
    if (m_name.isEmpty()) {
        // "%s(%p)" as the C library prints it, without the formatter.
        char address[2 + 2 * sizeof(void*) + 2];
        char* end = address + sizeof address;
        char* p = end;
        *--p = ')';
        for (auto a = reinterpret_cast<uintptr_t>(this); a; a >>= 4)
            *--p = "0123456789abcdef"[a & 15];
        *--p = 'x';
        *--p = '0';
        *--p = '(';
        String name = m_functionName;
        name += String(p, static_cast<size_t>(end - p));
        const_cast<Text&>(m_name) = std::move(name);
    }
    return m_name.get();
}

uint64_t FunctionNode::PENDING_UPDATES_IN_GRAPH() {
    return s_pendingUpdatesInGraph;
}

void FunctionNode::setDirty(bool dirty) {
    if (m_dirty == dirty) return;
    m_dirty = dirty;
    for (const VXLWPtr<Node>& child : m_children) {
        if (dirty)
            --child->m_cleanParents;
        else
            ++child->m_cleanParents;
    }
}

void FunctionNode::addInterest() {
    Node::addInterest();
    requestUpdate();
}

String FunctionNode::getNormalizedExpression() const {
    struct Frame {
        const FunctionNode* node;
        size_t next;
    };
    WalkStack<Frame> stack;
    stack.push({this, 0});
    String text = m_functionName;
    text += '(';
    while (!stack.empty()) {
        Frame& f = stack.top();
        if (f.next == f.node->m_children.size()) {
            text += ')';
            stack.pop();
            continue;
        }
        if (f.next) text += ',';
        const Node* child = f.node->m_children[f.next++].get();
        if (child->m_kind == KIND_FUNCTION) {
            const auto* fc = static_cast<const FunctionNode*>(child);
            text += fc->m_functionName;
            text += '(';
            stack.push({fc, 0});
        } else if (child->m_kind == KIND_PROXY) {
            // A name: its key is the name itself, appended without a copy.
            text += static_cast<const FunctionNode*>(child)->m_functionName;
        } else {
            text += child->getNormalizedExpression();
        }
    }
    return text;
}

bool FunctionNode::triggerEvent(const Event& e) {
    SYSEVENT_LOG(3, "[%s]   clear dirty flag", getLogName().c_str());
    setDirty(false);
    return Node::triggerEvent(e);
}

bool FunctionNode::isDescendant(Node* n) const {
    // Reachability over the children's closure. Iterative, and visiting each
    // shared node once: a walk of every path would be exponential in graphs
    // where names are used twice by the next expression up (IF(a>0,a,0)).
    NodeWalk& walk = NodeWalk::scratch();
    walk.start(this);
    while (const Node* f = walk.next()) {
        for (const VXLWPtr<Node>& child : static_cast<const FunctionNode*>(f)->m_children) {
            if (child.get() == n) return walk.done(true);
            if (child->m_kind != KIND_PLAIN) walk.reach(child.get());
        }
    }
    return walk.done(false);
}

void FunctionNode::requestUpdate() {
    if (!m_dirty) return;
    setDirty(false);
    bringUpToDate();
}

void FunctionNode::bringUpToDate() {
    // Each dirty child is cleared and brought up to date when the walk
    // reaches it, exactly where recompute's read of it would have done so.
    WalkStack<ReadFrame> stack;
    stack.push({this, 0});
    while (!stack.empty()) {
        ReadFrame& f = stack.top();
        FunctionNode* n = f.node;
        if (f.next < n->m_children.size()) {
            Node* child = n->m_children[f.next++].get();
            if (child->m_dirty) {
                auto* fc = static_cast<FunctionNode*>(child);
                fc->setDirty(false);
                stack.push({fc, 0});
            }
            continue;
        }
        stack.pop();
        n->recompute(false);
    }
}

XCode FunctionNode::addArgument(Node* child) {
    return addChild(child);
}

XCode FunctionNode::swapArgument(unsigned index, Node* child, VXLWPtr<Node>& oldChild) {
    return swapChild(index, child, oldChild);
}

XCode FunctionNode::verifyArguments() {
    return XCode();
}

bool FunctionNode::forceRecompute() {
    return recompute(true);
}

bool FunctionNode::wouldCloseCycle(Node* child) const {
    if (child == this) return true;
    // Nothing lies below a plain child, and nothing above a node without
    // parents (every node the parser is still building).
    if (child->m_kind == KIND_PLAIN || m_parents.empty()) return false;
    // This node lies below `child` exactly when `child` lies above it. Both
    // walks answer the question, so they take turns, one node each, and the
    // first to run out of nodes answers no: the check costs about twice the
    // smaller of the two closures. That keeps re-targeting a name used by
    // many formulas (many nodes above, few below the new target) as cheap as
    // binding the tail of a long chain (few above, many below).
    NodeWalk& down = NodeWalk::scratch();
    NodeWalk& up = NodeWalk::scratch(1);
    const auto answer = [&](bool closes) {
        down.done(closes);
        return up.done(closes);
    };
    down.start(child);
    up.start(this);
    while (true) {
        const Node* u = up.next();
        if (!u) return answer(false);
        for (FunctionNode* p : u->m_parents) {
            if (p == child) return answer(true);
            up.reach(p);
        }
        const Node* d = down.next();
        if (!d) return answer(false);
        for (const VXLWPtr<Node>& c : static_cast<const FunctionNode*>(d)->m_children) {
            if (c.get() == this) return answer(true);
            if (c->m_kind != KIND_PLAIN) down.reach(c.get());
        }
    }
}

XCode FunctionNode::addChild(Node* child) {
    if (!child) return XCode(XCode::GENERIC_FAILURE);
    if (wouldCloseCycle(child)) return XCode(XCode::GENERIC_FAILURE, "CIRCULAR REFERENCE");
    setDirty(true);
    m_children.emplace_back(child);
    child->addParent(this);
    return XCode();
}

XCode FunctionNode::swapChild(unsigned index, Node* child, VXLWPtr<Node>& oldChild) {
    if (index >= m_children.size() || !child) return XCode(XCode::GENERIC_FAILURE);
    oldChild = m_children[index];
    if (wouldCloseCycle(child)) return XCode(XCode::GENERIC_FAILURE, "CIRCULAR REFERENCE");
    setDirty(true);
    oldChild->removeParent(this);
    m_children[index] = child;
    // removeParent dropped every link to this node; the old child keeps one
    // for each other position in which it is still an argument, so that
    // every node has one link per position, also when it replaces itself.
    for (size_t i = 0; i < m_children.size(); ++i)
        if (i != index && m_children[i] == oldChild) oldChild->addParent(this);
    child->addParent(this);
    return XCode();
}

bool FunctionNode::handlesErrorsManually() const {
    return false;
}

bool FunctionNode::handlesTimeManually() const {
    return true;
}

bool FunctionNode::shallBeUpdated() {
    return ASK(this);
}

FunctionNode::AskStep FunctionNode::beginAsk() {
    const bool traced = LOG_ADMITS(3);
    TRACE_STEP("[%s] Shall be updated?", getLogName().c_str());
    if (m_dirty) return ANSWER_NO;
    TRACE_STEP("[%s]   Not dirty", getLogName().c_str());

    if (m_pendingUpdates > 0) {
        // Reached again along another path: our parents were asked already.
        TRACE_STEP("[%s]   yes, we already know", getLogName().c_str());
        ++m_pendingUpdates;
        ++s_pendingUpdatesInGraph;
        TRACE_STEP("[%s]   %u updates pending", getLogName().c_str(), m_pendingUpdates);
        return ANSWER_YES;
    }

    const bool interested = m_interestCount > 0;
    if (interested)
        TRACE_STEP("[%s]   yes, because there are %u interests", getLogName().c_str(),
                   m_interestCount);
    m_updatingParents.clear();
    return interested ? ASK_PARENTS_INTERESTED : ASK_PARENTS;
}

bool FunctionNode::finishAsk(bool interested) {
    const bool traced = LOG_ADMITS(3);
    if (!interested) {
        setDirty(true);
        TRACE_STEP("[%s]   no; marked dirty", getLogName().c_str());
        return false;
    }
    ++m_pendingUpdates;
    ++s_pendingUpdatesInGraph;
    TRACE_STEP("[%s]   %u updates pending", getLogName().c_str(), m_pendingUpdates);
    return true;
}

bool FunctionNode::ASK(FunctionNode* start) {
    const bool traced = LOG_ADMITS(3);
    const AskStep first = start->beginAsk();
    if (first == ANSWER_NO || first == ANSWER_YES) return first == ANSWER_YES;

    // Every parent is asked, so that each one counts its pending update or
    // is marked dirty; those that say yes expect an update from the node
    // that asked. Untraced, a dirty parent (whose answer is no, with no
    // effect) is passed by, and a node without clean parents asks none.
    WalkStack<AskFrame> stack;
    auto push = [&](FunctionNode* n, AskStep step) {
        const size_t next = !traced && n->m_cleanParents == 0 ? n->m_parents.size() : 0;
        stack.push({n, next, step == ASK_PARENTS_INTERESTED});
    };
    push(start, first);
    bool answer = false;
    while (!stack.empty()) {
        AskFrame& f = stack.top();
        FunctionNode* n = f.node;
        if (f.next < n->m_parents.size()) {
            FunctionNode* p = n->m_parents[f.next++];
            if (!traced && p->m_dirty) continue;
            const AskStep step = p->beginAsk();
            if (step == ANSWER_YES) {
                n->m_updatingParents.push_back(p);
                TRACE_STEP("[%s]   yes, because a parent is interested", n->getLogName().c_str());
                f.interested = true;
            } else if (step != ANSWER_NO) {
                push(p, step);
            }
            continue;
        }
        const bool yes = n->finishAsk(f.interested);
        stack.pop();
        if (stack.empty()) {
            answer = yes;
        } else if (yes) {
            AskFrame& below = stack.top();
            below.node->m_updatingParents.push_back(n);
            TRACE_STEP("[%s]   yes, because a parent is interested",
                       below.node->getLogName().c_str());
            below.interested = true;
        }
    }
    return answer;
}

void FunctionNode::update(bool changed) {
    DELIVER(this, changed);
}

bool FunctionNode::receiveUpdate(bool changed, bool& result) {
    const bool traced = LOG_ADMITS(3);
    TRACE_STEP("[%s] update, child value %s changed", getLogName().c_str(),
               changed ? "has" : "has not");
    --m_pendingUpdates;
    --s_pendingUpdatesInGraph;
    if (changed) ++m_changedUpdates;
    if (m_pendingUpdates > 0) {
        TRACE_STEP("[%s]   no recomputation yet, %u updates pending", getLogName().c_str(),
                   m_pendingUpdates);
        return false;
    }
    result = false;
    if (m_changedUpdates > 0) {
        TRACE_STEP("[%s]   recomputation required (%u updates with value changes)",
                   getLogName().c_str(), m_changedUpdates);
        m_changedUpdates = 0;
        result = recompute(false);
    } else {
        TRACE_STEP("[%s]   no recomputation required (no update with value change)",
                   getLogName().c_str());
    }
    return true;
}

void FunctionNode::DELIVER(FunctionNode* start, bool changed) {
    // Each node passes its outcome to the parents that answered yes to it,
    // in list order, each parent's own delivery finishing before the next
    // parent hears. Nothing edits those lists before they are cleared: the
    // updates run after the first phase is over, and no propagation can
    // start while this one runs.
    bool result = false;
    if (!start->receiveUpdate(changed, result)) return;
    WalkStack<DeliverFrame> stack;
    stack.push({start, 0, result});
    while (!stack.empty()) {
        DeliverFrame& f = stack.top();
        FunctionNode* n = f.node;
        if (f.next < n->m_updatingParents.size()) {
            FunctionNode* p = n->m_updatingParents[f.next++];
            const bool changedBelow = f.result;
            if (p->receiveUpdate(changedBelow, result)) stack.push({p, 0, result});
            continue;
        }
        n->m_updatingParents.clear();
        stack.pop();
    }
}

bool FunctionNode::recompute(bool force) {
    // A name's node takes its target's event as it stands, times included;
    // unless the line below is traced, or the target is an error or
    // undefined (screened into an error without times), that needs none of
    // the screening and no result of its own.
    if (m_kind == KIND_PROXY && !LOG_ADMITS(3)) {
        const Event& target = m_children[0]->currentEvent();
        if (!target.value.isError() && target.value.getDataType() != DT_UNDEF)
            return force ? triggerEvent(target) : storeEvent(target);
    }
    Event result;
    const bool manualErrors = handlesErrorsManually();
    const bool manualTime = handlesTimeManually();
    const bool withArgumentText = LOG_ADMITS(1);
    String argumentText;

    for (size_t i = 0; i < m_children.size(); ++i) {
        const Event& e = m_children[i]->currentEvent();
        if (withArgumentText) appendArgumentText(argumentText, i, e.value);
        if (!manualTime) {
            if (i == 0)
                result.setTime(e);
            else
                result.embraceTime(e);
        }
        // The first error or undefined argument in order decides the result.
        if (!manualErrors && !result.value.isError()) {
            if (e.value.isError())
                setErrorValue(result.value, e.value);
            else if (e.value.getDataType() == DT_UNDEF)
                setErrorValue(result.value, DST_ERR_VAL);
        }
    }
    if (m_children.empty() && !manualTime) result.start = result.end = VX::Time::NOW(1);

    if (!result.value.isError()) computeInto(result);

    if (LOG_ADMITS(3)) traceRecompute(*this, argumentText, result);
    return force ? triggerEvent(result) : storeEvent(result);
}

#undef TRACE_STEP

}  // namespace VX::SysEvent
