// What the web-view library puts into every page: the promise table and one function a bound command. `post` reaches
// the harness, which passes the call on to the program.
(function () {
    'use strict';
    if (window.__webview__) return;
    function Webview() {}
    var promises = {};
    var count = 0;
    Webview.prototype.post = function (message) {
        return window.__postToProgram(message);
    };
    Webview.prototype.call = function (method) {
        var id = 'call' + ++count;
        var params = Array.prototype.slice.call(arguments, 1);
        var promise = new Promise(function (resolve, reject) {
            promises[id] = { resolve: resolve, reject: reject };
        });
        this.post(JSON.stringify({ id: id, method: method, params: params }));
        return promise;
    };
    Webview.prototype.onReply = function (id, status, result) {
        var promise = promises[id];
        if (!promise) return;
        if (result !== undefined) {
            try {
                result = JSON.parse(result);
            } catch {
                promise.reject(new Error('Failed to parse binding result as JSON'));
                return;
            }
        }
        if (status === 0) promise.resolve(result);
        else promise.reject(result);
    };
    Webview.prototype.onBind = function (name) {
        window[name] = function () {
            return Webview.prototype.call.apply(this, [name].concat(Array.prototype.slice.call(arguments)));
        }.bind(this);
    };
    Webview.prototype.onUnbind = function (name) {
        delete window[name];
    };
    window.__webview__ = new Webview();
})();
