#pragma once

#include "gl/Export.h"

#include <cstdint>
#include <memory>

/// A set of occlusion queries: how many samples of what is drawn under each of them pass the depth test.
///
///     GLOcclusionQuery queries;
///     if (queries.generateQueries(2)) {
///         queries.beginQuery(0);
///         ... draw the box round one object, with colour and depth writes off ...
///         queries.endQuery(0);
///         ... the same for 1 ...
///         queries.completeQueryRenders();
///         if (queries.queryIsAvailable(1) && queries.sampleCount(0) == 0) ...   // hidden
///     }
///
/// By GL_ARB_occlusion_query, or by GL_NV_occlusion_query where only that is offered; chosen when the object
/// is made. With neither everything answers false or 0. Everything needs the table and a current context,
/// that of the queries: contexts don't share them. GL allows one query at a time.
class ORLOGL_API GLOcclusionQuery {
public:
    GLOcclusionQuery();

    /// As reset.
    ~GLOcclusionQuery();

    GLOcclusionQuery(const GLOcclusionQuery&) = delete;
    GLOcclusionQuery& operator=(const GLOcclusionQuery&) = delete;

    /// Makes `n` queries in place of those that there are. False, and nothing done, for 0 queries, for more
    /// than an int can count, and without support; false, and no queries left, without memory.
    bool generateQueries(unsigned n);

    /// Deletes the queries.
    void reset();

    /// Samples are counted from here on, until endQuery. False for an index beyond the queries.
    bool beginQuery(unsigned i);

    /// Ends the query in progress. The index is only looked at for its range.
    bool endQuery(unsigned i);

    /// Sends the queries on their way where GL doesn't by itself: by NV a glFlush, by ARB nothing.
    void completeQueryRenders();

    /// Whether the result has come; false for an index beyond the queries.
    bool queryIsAvailable(unsigned i) const;

    /// Waits, busily and without end, until the last query's result has come: results come in order. Never
    /// returns when the last query was never begun or is still in progress. False without queries.
    bool waitForQueriesToProcess() const;

    /// The samples that passed; waits in GL for the result. 0 for an index beyond the queries.
    uint32_t sampleCount(unsigned i) const;

    uint32_t fCounterBits = 0;          ///< of GL's counter; 0: no queries can be had
    std::unique_ptr<uint32_t[]> fNames; ///< GL's, one a query
    uint32_t fCount = 0;                ///< how many
    bool fUseARB = false;               ///< whether by the ARB's extension, else by NV's
};
