<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="en_US" sourcelanguage="zh_CN">
<context>
    <name>AboutUsDialog</name>
    <message>
        <source>语音鼠标助手</source>
        <translation>Voice mouse assistant</translation>
    </message>
    <message>
        <source>&lt;a href=&quot;%1&quot;&gt;访问软件网站&lt;/a&gt;</source>
        <translation>&lt;a href=&quot;%1&quot;&gt;Visit the website&lt;/a&gt;</translation>
    </message>
    <message>
        <source>确定</source>
        <translation>OK</translation>
    </message>
    <message>
        <source>关于我们</source>
        <translation>About</translation>
    </message>
    <message>
        <source>版本号：%1</source>
        <translation>Version: %1</translation>
    </message>
</context>
<context>
    <name>AppAutoRunDialog</name>
    <message>
        <source>开机时自动启动Zorvane</source>
        <translation>Start Zorvane when I log in</translation>
    </message>
    <message>
        <source>确定</source>
        <translation>OK</translation>
    </message>
    <message>
        <source>Zorvane需要在后台运行才能随时响应鼠标的语音键。</source>
        <translation>Zorvane needs to run in the background to answer the mouse&apos;s voice key at any time.</translation>
    </message>
    <message>
        <source>开机启动</source>
        <translation>Start at login</translation>
    </message>
</context>
<context>
    <name>AppAutoRunPresenter</name>
    <message>
        <source>Zorvane 尚未安装：登录时将直接启动 %1。</source>
        <translation>Zorvane is not installed: %1 will be started at login.</translation>
    </message>
    <message>
        <source>登录时启动的是已安装的 %1，不是正在运行的这一个。</source>
        <translation>The installed %1 starts at login, not the one running now.</translation>
    </message>
</context>
<context>
    <name>ApplicationPickerDialog</name>
    <message>
        <source>没有找到应用程序</source>
        <translation>No applications found</translation>
    </message>
    <message>
        <source>确定</source>
        <translation>OK</translation>
    </message>
    <message>
        <source>搜索应用程序</source>
        <translation>Search applications</translation>
    </message>
    <message>
        <source>取消</source>
        <translation>Cancel</translation>
    </message>
    <message>
        <source>选择应用程序</source>
        <translation>Choose an application</translation>
    </message>
</context>
<context>
    <name>BLEConnectedDialog</name>
    <message>
        <source>Zorvane 蓝牙已连接</source>
        <translation>Zorvane Bluetooth connected</translation>
    </message>
    <message>
        <source>蓝牙鼠标已连接</source>
        <translation>Bluetooth mouse connected</translation>
    </message>
</context>
<context>
    <name>BLEConnentionGuidanceDialog</name>
    <message>
        <source>Zorvane 蓝牙连接向导</source>
        <translation>Zorvane Bluetooth setup</translation>
    </message>
    <message>
        <source>未找到鼠标，是否注册新的鼠标？</source>
        <translation>No mouse found. Register a new mouse?</translation>
    </message>
    <message>
        <source>已保存的鼠标未响应，是否重新注册？</source>
        <translation>The saved mouse does not respond. Register it again?</translation>
    </message>
    <message>
        <source>正在注册...</source>
        <translation>Registering...</translation>
    </message>
    <message>
        <source>设备注册失败, 请尝试重新注册</source>
        <translation>Registration failed. Please try again.</translation>
    </message>
    <message>
        <source>重新注册</source>
        <translation>Register again</translation>
    </message>
    <message>
        <source>请选择您的鼠标型号</source>
        <translation>Choose your mouse model</translation>
    </message>
    <message>
        <source>按以下步骤注册鼠标</source>
        <translation>Register your mouse in three steps</translation>
    </message>
    <message>
        <source>1. 在系统设置中打开蓝牙</source>
        <translation>1. Turn on Bluetooth in the system settings</translation>
    </message>
    <message>
        <source>2. 长按鼠标的配对键，直到指示灯闪烁</source>
        <translation>2. Hold the mouse&apos;s pairing key until the light blinks</translation>
    </message>
    <message>
        <source>3. 将鼠标靠近电脑，点击开始注册</source>
        <translation>3. Bring the mouse near the computer and click Start</translation>
    </message>
    <message>
        <source>开始注册</source>
        <translation>Start</translation>
    </message>
    <message>
        <source>系统已连接了一个鼠标</source>
        <translation>A mouse is already connected</translation>
    </message>
    <message>
        <source>如果它不是您要注册的鼠标，请点击下一步选择型号</source>
        <translation>If it is not the mouse you want to register, click Next to choose the model</translation>
    </message>
    <message>
        <source>下一步</source>
        <translation>Next</translation>
    </message>
    <message>
        <source>取消</source>
        <translation>Cancel</translation>
    </message>
    <message>
        <source>注册</source>
        <translation>Register</translation>
    </message>
    <message>
        <source>打开蓝牙设置</source>
        <translation>Open Bluetooth settings</translation>
    </message>
    <message>
        <source>未找到系统的蓝牙设置，请从系统菜单中打开</source>
        <translation>The system&apos;s Bluetooth settings were not found; open them from the system menu</translation>
    </message>
</context>
<context>
    <name>CalendarPhrasesDialog</name>
    <message>
        <source>Zorvane 日历提醒</source>
        <translation>Zorvane daily phrase</translation>
    </message>
</context>
<context>
    <name>ChangeTranLanguageDialog</name>
    <message>
        <source>更多</source>
        <translation>More</translation>
    </message>
</context>
<context>
    <name>ChangeTranMoreLanguageDialog</name>
    <message>
        <source>确定</source>
        <translation>OK</translation>
    </message>
    <message>
        <source>取消</source>
        <translation>Cancel</translation>
    </message>
    <message>
        <source>说话语言</source>
        <translation>Spoken language</translation>
    </message>
    <message>
        <source>文字语言</source>
        <translation>Text language</translation>
    </message>
    <message>
        <source>说话</source>
        <translation>From</translation>
    </message>
    <message>
        <source>文字</source>
        <translation>To</translation>
    </message>
</context>
<context>
    <name>CommandWords</name>
    <message>
        <source>* 命令词长度必须要大于一个字！！！</source>
        <translation>* A command word needs at least two characters!</translation>
    </message>
    <message>
        <source>* 内容不能为空！！！</source>
        <translation>* The content cannot be empty!</translation>
    </message>
    <message>
        <source>* 编辑失败1！！！</source>
        <translation>* Editing failed (1)!</translation>
    </message>
    <message>
        <source>* 打开数据失败！！！</source>
        <translation>* Cannot open the command words!</translation>
    </message>
    <message>
        <source>* 编辑失败2！！！</source>
        <translation>* Editing failed (2)!</translation>
    </message>
    <message>
        <source>* 添加数据失败！！！</source>
        <translation>* Adding failed!</translation>
    </message>
</context>
<context>
    <name>DeletePopupDialog</name>
    <message>
        <source>删除</source>
        <translation>Delete</translation>
    </message>
    <message>
        <source>取消</source>
        <translation>Cancel</translation>
    </message>
    <message>
        <source>确定删除所选的命令词吗？</source>
        <translation>Delete the selected command word?</translation>
    </message>
    <message>
        <source>删除后无法恢复</source>
        <translation>This cannot be undone</translation>
    </message>
</context>
<context>
    <name>DesktopNotifications</name>
    <message>
        <source>鼠标电量低</source>
        <translation>Mouse battery low</translation>
    </message>
    <message>
        <source>请及时为鼠标充电</source>
        <translation>Please charge the mouse soon</translation>
    </message>
    <message>
        <source>鼠标电量严重不足</source>
        <translation>Mouse battery very low</translation>
    </message>
    <message>
        <source>鼠标即将关机，请立即充电</source>
        <translation>The mouse will shut down soon; charge it now</translation>
    </message>
    <message>
        <source>鼠标已关机</source>
        <translation>Mouse shut down</translation>
    </message>
    <message>
        <source>电量耗尽，充电后即可继续使用</source>
        <translation>The battery is empty; charge it to go on</translation>
    </message>
    <message>
        <source>鼠标正在充电</source>
        <translation>Mouse charging</translation>
    </message>
    <message>
        <source>设备插入</source>
        <translation>Device plugged in</translation>
    </message>
    <message>
        <source>设备拔出</source>
        <translation>Device unplugged</translation>
    </message>
    <message>
        <source>蓝牙鼠标已连接</source>
        <translation>Bluetooth mouse connected</translation>
    </message>
</context>
<context>
    <name>ExplainDialog</name>
    <message>
        <source>使用说明</source>
        <translation>How to use</translation>
    </message>
</context>
<context>
    <name>FeedbackDialog</name>
    <message>
        <source>请输入标题</source>
        <translation>Enter a title</translation>
    </message>
    <message>
        <source>请写下您的建议或遇到的问题</source>
        <translation>Write your suggestion or the problem you met</translation>
    </message>
    <message>
        <source>提交</source>
        <translation>Submit</translation>
    </message>
    <message>
        <source>取消</source>
        <translation>Cancel</translation>
    </message>
    <message>
        <source>联系我们</source>
        <translation>Contact us</translation>
    </message>
    <message>
        <source>点击联系我们！</source>
        <translation>Click to contact us!</translation>
    </message>
    <message>
        <source>意见反馈</source>
        <translation>Feedback</translation>
    </message>
</context>
<context>
    <name>FeedbackPresenter</name>
    <message>
        <source>感谢您的建议, 我们将尽快处理, 此界面%1秒后退出</source>
        <translation>Thank you for your feedback, we will look at it soon. This window closes in %1 s</translation>
    </message>
    <message>
        <source>不能为空!</source>
        <translation>Cannot be empty!</translation>
    </message>
</context>
<context>
    <name>FocusFollowPanel</name>
    <message>
        <source>中</source>
        <translation>ZH</translation>
    </message>
    <message>
        <source>英</source>
        <translation>EN</translation>
    </message>
    <message>
        <source>编辑</source>
        <translation>Edit</translation>
    </message>
    <message>
        <source>发送</source>
        <translation>Send</translation>
    </message>
    <message>
        <source>选择发送方式</source>
        <translation>How to send</translation>
    </message>
    <message>
        <source>去除标点符号</source>
        <translation>Remove punctuation</translation>
    </message>
    <message>
        <source>支持单击模式</source>
        <translation>Click mode</translation>
    </message>
    <message>
        <source>退出</source>
        <translation>Quit</translation>
    </message>
    <message>
        <source>按Enter键发送</source>
        <translation>Send with Enter</translation>
    </message>
    <message>
        <source>按空格键发送</source>
        <translation>Send with Space</translation>
    </message>
    <message>
        <source>自动发送模式</source>
        <translation>Send automatically</translation>
    </message>
    <message>
        <source>全选并复制</source>
        <translation>Select all and copy</translation>
    </message>
    <message>
        <source>复制</source>
        <translation>Copy</translation>
    </message>
    <message>
        <source>翻译中...</source>
        <translation>Translating...</translation>
    </message>
    <message>
        <source>翻译错误!</source>
        <translation>Failed!</translation>
    </message>
</context>
<context>
    <name>FramelessDialog</name>
    <message>
        <source>关闭</source>
        <translation>Close</translation>
    </message>
</context>
<context>
    <name>InputBackendChoice</name>
    <message>
        <source>听写的文字无法输入到 Wayland 窗口</source>
        <translation>Dictated text cannot reach Wayland windows</translation>
    </message>
    <message>
        <source>此桌面既没有提供虚拟键盘，也没有可用的 IBus 输入法：文字只能输入到 X11 程序中，GNOME、KDE 等原生 Wayland 程序的窗口收不到任何文字。请安装并启用 IBus（在系统设置的“键盘/输入源”中添加 IBus 输入源），或在登录界面选择 X11（Xorg）会话，然后重新启动 Zorvane。</source>
        <translation>This desktop offers neither a virtual keyboard nor a usable IBus input method: text can only be typed into X11 programs, and native Wayland windows (GNOME, KDE and others) receive nothing. Install and enable IBus (add an IBus input source under Keyboard / Input Sources in the system settings), or choose an X11 (Xorg) session at login, then start Zorvane again.</translation>
    </message>
</context>
<context>
    <name>InputDialog</name>
    <message>
        <source>选择语言</source>
        <translation>Choose the language</translation>
    </message>
    <message>
        <source>去除标点符号</source>
        <translation>Remove punctuation</translation>
    </message>
    <message>
        <source>支持单击模式</source>
        <translation>Click mode</translation>
    </message>
    <message>
        <source>退出</source>
        <translation>Quit</translation>
    </message>
    <message>
        <source>请选择语言!</source>
        <translation>Please choose a language!</translation>
    </message>
</context>
<context>
    <name>InputPresenter</name>
    <message>
        <source>正在识别中</source>
        <translation>Recognising</translation>
    </message>
    <message>
        <source>正在打开...</source>
        <translation>Opening...</translation>
    </message>
    <message>
        <source>正在打开</source>
        <translation>Opening </translation>
    </message>
    <message>
        <source>正在打开网站</source>
        <translation>Opening the website</translation>
    </message>
    <message>
        <source>正在打开文件...</source>
        <translation>Opening the file...</translation>
    </message>
    <message>
        <source>正在打开文件夹...</source>
        <translation>Opening the folder...</translation>
    </message>
    <message>
        <source>正在查询：从%1到%2的票</source>
        <translation>Looking up tickets from %1 to %2</translation>
    </message>
    <message>
        <source>正在搜索:</source>
        <translation>Searching: </translation>
    </message>
    <message>
        <source>正在打开网站...</source>
        <translation>Opening the website...</translation>
    </message>
    <message>
        <source> : 内容太短啦！</source>
        <translation> : too short!</translation>
    </message>
    <message>
        <source> : 没听懂您说的。</source>
        <translation> : sorry, I did not understand.</translation>
    </message>
    <message>
        <source>正在返回桌面...</source>
        <translation>Showing the desktop...</translation>
    </message>
    <message>
        <source>正在全选...</source>
        <translation>Selecting all...</translation>
    </message>
    <message>
        <source>正在删除...</source>
        <translation>Deleting...</translation>
    </message>
    <message>
        <source>正在删除文件...</source>
        <translation>Deleting the file...</translation>
    </message>
</context>
<context>
    <name>LanguageTables</name>
    <message>
        <source>普通话</source>
        <translation>Mandarin</translation>
    </message>
    <message>
        <source>中</source>
        <translation>ZH</translation>
    </message>
    <message>
        <source>粤语</source>
        <translation>Cantonese</translation>
    </message>
    <message>
        <source>粤</source>
        <translation>YUE</translation>
    </message>
    <message>
        <source>四川话</source>
        <translation>Sichuanese</translation>
    </message>
    <message>
        <source>川</source>
        <translation>SC</translation>
    </message>
    <message>
        <source>英语</source>
        <translation>English</translation>
    </message>
    <message>
        <source>英</source>
        <translation>EN</translation>
    </message>
    <message>
        <source>普通话简体</source>
        <translation>Mandarin (Simplified)</translation>
    </message>
    <message>
        <source>普通话繁体</source>
        <translation>Mandarin (Traditional)</translation>
    </message>
    <message>
        <source>粤语简体</source>
        <translation>Cantonese (Simplified)</translation>
    </message>
    <message>
        <source>粤语繁体</source>
        <translation>Cantonese (Traditional)</translation>
    </message>
    <message>
        <source>文言文</source>
        <translation>Classical Chinese</translation>
    </message>
    <message>
        <source>文</source>
        <translation>LZH</translation>
    </message>
    <message>
        <source>日语</source>
        <translation>Japanese</translation>
    </message>
    <message>
        <source>日</source>
        <translation>JA</translation>
    </message>
    <message>
        <source>韩语</source>
        <translation>Korean</translation>
    </message>
    <message>
        <source>韩</source>
        <translation>KO</translation>
    </message>
    <message>
        <source>法语</source>
        <translation>French</translation>
    </message>
    <message>
        <source>法</source>
        <translation>FR</translation>
    </message>
    <message>
        <source>西班牙语</source>
        <translation>Spanish</translation>
    </message>
    <message>
        <source>西</source>
        <translation>ES</translation>
    </message>
    <message>
        <source>泰语</source>
        <translation>Thai</translation>
    </message>
    <message>
        <source>泰</source>
        <translation>TH</translation>
    </message>
    <message>
        <source>阿拉伯语</source>
        <translation>Arabic</translation>
    </message>
    <message>
        <source>阿</source>
        <translation>AR</translation>
    </message>
    <message>
        <source>俄语</source>
        <translation>Russian</translation>
    </message>
    <message>
        <source>俄</source>
        <translation>RU</translation>
    </message>
    <message>
        <source>葡萄牙语</source>
        <translation>Portuguese</translation>
    </message>
    <message>
        <source>葡</source>
        <translation>PT</translation>
    </message>
    <message>
        <source>德语</source>
        <translation>German</translation>
    </message>
    <message>
        <source>德</source>
        <translation>DE</translation>
    </message>
    <message>
        <source>意大利语</source>
        <translation>Italian</translation>
    </message>
    <message>
        <source>意</source>
        <translation>IT</translation>
    </message>
    <message>
        <source>希腊语</source>
        <translation>Greek</translation>
    </message>
    <message>
        <source>希</source>
        <translation>EL</translation>
    </message>
    <message>
        <source>荷兰语</source>
        <translation>Dutch</translation>
    </message>
    <message>
        <source>荷</source>
        <translation>NL</translation>
    </message>
    <message>
        <source>波兰语</source>
        <translation>Polish</translation>
    </message>
    <message>
        <source>波</source>
        <translation>PL</translation>
    </message>
    <message>
        <source>保加利亚语</source>
        <translation>Bulgarian</translation>
    </message>
    <message>
        <source>保</source>
        <translation>BG</translation>
    </message>
    <message>
        <source>爱沙尼亚语</source>
        <translation>Estonian</translation>
    </message>
    <message>
        <source>爱</source>
        <translation>ET</translation>
    </message>
    <message>
        <source>丹麦语</source>
        <translation>Danish</translation>
    </message>
    <message>
        <source>丹</source>
        <translation>DA</translation>
    </message>
    <message>
        <source>芬兰语</source>
        <translation>Finnish</translation>
    </message>
    <message>
        <source>芬</source>
        <translation>FI</translation>
    </message>
    <message>
        <source>捷克语</source>
        <translation>Czech</translation>
    </message>
    <message>
        <source>捷</source>
        <translation>CS</translation>
    </message>
    <message>
        <source>罗马尼亚语</source>
        <translation>Romanian</translation>
    </message>
    <message>
        <source>罗</source>
        <translation>RO</translation>
    </message>
    <message>
        <source>斯洛文尼亚语</source>
        <translation>Slovenian</translation>
    </message>
    <message>
        <source>斯</source>
        <translation>SL</translation>
    </message>
    <message>
        <source>瑞典语</source>
        <translation>Swedish</translation>
    </message>
    <message>
        <source>瑞</source>
        <translation>SV</translation>
    </message>
    <message>
        <source>匈牙利语</source>
        <translation>Hungarian</translation>
    </message>
    <message>
        <source>匈</source>
        <translation>HU</translation>
    </message>
    <message>
        <source>越南语</source>
        <translation>Vietnamese</translation>
    </message>
    <message>
        <source>越</source>
        <translation>VI</translation>
    </message>
    <message>
        <source>中(简)</source>
        <translation>ZH (S)</translation>
    </message>
    <message>
        <source>中(繁)</source>
        <translation>ZH (T)</translation>
    </message>
    <message>
        <source>粤(简)</source>
        <translation>YUE (S)</translation>
    </message>
    <message>
        <source>粤(繁)</source>
        <translation>YUE (T)</translation>
    </message>
    <message>
        <source>中-英</source>
        <translation>ZH-EN</translation>
    </message>
    <message>
        <source>中文</source>
        <translation>Chinese</translation>
    </message>
    <message>
        <source>中文(简体)</source>
        <translation>Chinese (Simplified)</translation>
    </message>
    <message>
        <source>中文(繁体)</source>
        <translation>Chinese (Traditional)</translation>
    </message>
    <message>
        <source>粤语(简体)</source>
        <translation>Cantonese (Simplified)</translation>
    </message>
    <message>
        <source>粤语(繁体)</source>
        <translation>Cantonese (Traditional)</translation>
    </message>
    <message>
        <source>罗马利亚语</source>
        <translation>Romanian</translation>
    </message>
</context>
<context>
    <name>LowbatDialog</name>
    <message>
        <source>鼠标电量低，请及时充电</source>
        <translation>Mouse battery low, please charge it soon</translation>
    </message>
    <message>
        <source>鼠标电量严重不足</source>
        <translation>Mouse battery very low</translation>
    </message>
    <message>
        <source>鼠标电量耗尽，已关机</source>
        <translation>Mouse battery empty, it has shut down</translation>
    </message>
    <message>
        <source>鼠标正在充电</source>
        <translation>Mouse charging</translation>
    </message>
    <message>
        <source>Zorvane 电量提醒</source>
        <translation>Zorvane battery</translation>
    </message>
    <message>
        <source>不再提醒</source>
        <translation>Stop reminders</translation>
    </message>
    <message>
        <source>关闭</source>
        <translation>Close</translation>
    </message>
</context>
<context>
    <name>MainWindow</name>
    <message>
        <source>无法连接更新服务器，请检查网络后重试。</source>
        <translation>Cannot reach the update server. Check the network and try again.</translation>
    </message>
    <message>
        <source>检查更新</source>
        <translation>Check for updates</translation>
    </message>
    <message>
        <source>软件网站</source>
        <translation>Website</translation>
    </message>
    <message>
        <source>关于我们</source>
        <translation>About</translation>
    </message>
    <message>
        <source>正在检查更新…</source>
        <translation>Checking for updates…</translation>
    </message>
    <message>
        <source>麦克风无法打开</source>
        <translation>The microphone cannot be opened</translation>
    </message>
    <message>
        <source>网络未连接：联网后才能使用语音输入</source>
        <translation>No network: voice input needs a connection</translation>
    </message>
    <message>
        <source>无法连接到服务器：正在重试</source>
        <translation>Cannot reach the server: trying again</translation>
    </message>
    <message>
        <source>最佳分辨率</source>
        <translation>Best resolution</translation>
    </message>
    <message>
        <source>请选择要编辑的命令词！</source>
        <translation>Choose the command word to edit!</translation>
    </message>
    <message>
        <source>Tips:请添加(http://)或(https://)</source>
        <translation>Tip: start with http:// or https://</translation>
    </message>
    <message>
        <source>我想搜索</source>
        <translation>search for</translation>
    </message>
    <message>
        <source>待办事项</source>
        <translation>to-do list</translation>
    </message>
    <message>
        <source>/待办事项.docx</source>
        <translation>/To-do list.docx</translation>
    </message>
    <message>
        <source>下载</source>
        <translation>downloads</translation>
    </message>
    <message>
        <source>Tips:若快捷键不能设置，请先退出相关程序，再进行设置！</source>
        <translation>Tip: if the shortcut cannot be set, quit the program that uses it first!</translation>
    </message>
    <message>
        <source>全选</source>
        <translation>select all</translation>
    </message>
    <message>
        <source>点击“浏览”选择已安装的应用程序</source>
        <translation>Click “Browse” to choose an installed application</translation>
    </message>
    <message>
        <source>退出</source>
        <translation>Quit</translation>
    </message>
    <message>
        <source>退出 Zorvane 后，语音听写将停止，鼠标的语音键不再起作用。确定退出吗？</source>
        <translation>After Zorvane quits, dictation stops and the mouse&apos;s voice key does nothing. Quit now?</translation>
    </message>
    <message>
        <source>点击任务栏上的 Zorvane 图标可再次打开控制台，退出也在图标的菜单中。</source>
        <translation>Click the Zorvane icon in the panel to open the console again; Quit is in the icon&apos;s menu too.</translation>
    </message>
    <message>
        <source>从应用程序菜单再次启动 Zorvane 即可打开控制台；退出请用控制台右上角菜单中的“退出”。</source>
        <translation>Start Zorvane again from the applications menu to open the console; to quit, use Quit in the menu at the console&apos;s top right.</translation>
    </message>
    <message>
        <source>Zorvane 仍在运行，鼠标的语音键照常可用。</source>
        <translation>Zorvane is still running and the mouse&apos;s voice key works as usual. </translation>
    </message>
    <message>
        <source>知道了</source>
        <translation>Got it</translation>
    </message>
</context>
<context>
    <name>MainWindowPresenter</name>
    <message>
        <source>电量:%1; 音量:%2
RID:%3
DID:%4</source>
        <translation>Battery: %1; volume: %2
RID: %3
DID: %4</translation>
    </message>
    <message>
        <source>未识别的鼠标（客户编码 %1）</source>
        <translation>Unknown mouse (customer code %1)</translation>
    </message>
    <message>
        <source>选择文件</source>
        <translation>Choose a file</translation>
    </message>
    <message>
        <source>选择文件夹</source>
        <translation>Choose a folder</translation>
    </message>
</context>
<context>
    <name>MessageDialog</name>
    <message>
        <source>确定</source>
        <translation>OK</translation>
    </message>
    <message>
        <source>取消</source>
        <translation>Cancel</translation>
    </message>
</context>
<context>
    <name>NoticePanel</name>
    <message>
        <source>关闭</source>
        <translation>Close</translation>
    </message>
</context>
<context>
    <name>PaddleWordsDialog</name>
    <message>
        <source>女声</source>
        <translation>Female voice</translation>
    </message>
    <message>
        <source>男声</source>
        <translation>Male voice</translation>
    </message>
    <message>
        <source>洛比</source>
        <translation>Lobi</translation>
    </message>
    <message>
        <source>胖谷</source>
        <translation>Panggu</translation>
    </message>
    <message>
        <source>文字翻译</source>
        <translation>Translate text</translation>
    </message>
    <message>
        <source>中/英文朗读</source>
        <translation>Read aloud (Chinese/English)</translation>
    </message>
    <message>
        <source>选择朗读者</source>
        <translation>Choose the voice</translation>
    </message>
</context>
<context>
    <name>RestDialog</name>
    <message>
        <source>站起来伸个懒腰吧</source>
        <translation>Stand up and stretch</translation>
    </message>
    <message>
        <source>喝杯水，放松一下</source>
        <translation>Have a glass of water and relax</translation>
    </message>
    <message>
        <source>看看远处，让眼睛歇一会儿</source>
        <translation>Look into the distance and rest your eyes</translation>
    </message>
    <message>
        <source>活动一下肩颈吧</source>
        <translation>Loosen up your neck and shoulders</translation>
    </message>
    <message>
        <source>您已经连续工作很久了</source>
        <translation>You have been working for a long time</translation>
    </message>
    <message>
        <source>Zorvane 休息提醒</source>
        <translation>Zorvane break reminder</translation>
    </message>
</context>
<context>
    <name>SystemTray</name>
    <message>
        <source>已通过接收器连接，鼠标休眠中</source>
        <translation>Connected through the receiver, mouse asleep</translation>
    </message>
    <message>
        <source>已通过接收器连接</source>
        <translation>Connected through the receiver</translation>
    </message>
    <message>
        <source>已通过蓝牙连接，鼠标休眠中</source>
        <translation>Connected over Bluetooth, mouse asleep</translation>
    </message>
    <message>
        <source>已通过蓝牙连接</source>
        <translation>Connected over Bluetooth</translation>
    </message>
    <message>
        <source>未找到鼠标</source>
        <translation>No mouse found</translation>
    </message>
    <message>
        <source>麦克风无法打开</source>
        <translation>The microphone cannot be opened</translation>
    </message>
    <message>
        <source>网络未连接</source>
        <translation>No network</translation>
    </message>
    <message>
        <source>电量低，请及时充电</source>
        <translation>Battery low, please charge soon</translation>
    </message>
    <message>
        <source>电量严重不足，请立即充电</source>
        <translation>Battery very low, charge now</translation>
    </message>
    <message>
        <source>正在充电</source>
        <translation>Charging</translation>
    </message>
    <message>
        <source>无法连接到服务器</source>
        <translation>Cannot reach the server</translation>
    </message>
    <message>
        <source>电量约 %1%</source>
        <translation>Battery about %1%</translation>
    </message>
    <message>
        <source>打开控制台</source>
        <translation>Open the console</translation>
    </message>
    <message>
        <source>听写语言</source>
        <translation>Dictation language</translation>
    </message>
    <message>
        <source>开机自启动</source>
        <translation>Start at login</translation>
    </message>
    <message>
        <source>退出</source>
        <translation>Quit</translation>
    </message>
</context>
<context>
    <name>TextTranslateDialog</name>
    <message>
        <source>文字翻译</source>
        <translation>Translate text</translation>
    </message>
    <message>
        <source>关闭</source>
        <translation>Close</translation>
    </message>
    <message>
        <source>编辑原文</source>
        <translation>Edit the original</translation>
    </message>
    <message>
        <source>自动检测  →</source>
        <translation>Detect  →</translation>
    </message>
    <message>
        <source>朗读译文</source>
        <translation>Read the translation aloud</translation>
    </message>
    <message>
        <source>复制译文</source>
        <translation>Copy the translation</translation>
    </message>
    <message>
        <source>正在翻译中...</source>
        <translation>Translating...</translation>
    </message>
    <message>
        <source>翻译错误!</source>
        <translation>Translation failed!</translation>
    </message>
    <message>
        <source>复制成功!</source>
        <translation>Copied!</translation>
    </message>
    <message>
        <source>全选并复制</source>
        <translation>Select all and copy</translation>
    </message>
    <message>
        <source>复制</source>
        <translation>Copy</translation>
    </message>
</context>
<context>
    <name>USBChangeMessageDialog</name>
    <message>
        <source>Zorvane 设备提示</source>
        <translation>Zorvane device</translation>
    </message>
    <message>
        <source>设备插入</source>
        <translation>Device plugged in</translation>
    </message>
    <message>
        <source>设备拔出</source>
        <translation>Device unplugged</translation>
    </message>
</context>
<context>
    <name>Ui_MainWindow</name>
    <message>
        <source>添加命令词</source>
        <translation>Add a command word</translation>
    </message>
    <message>
        <source>编辑命令词</source>
        <translation>Edit a command word</translation>
    </message>
    <message>
        <source>菜单</source>
        <translation>Menu</translation>
    </message>
    <message>
        <source>最小化</source>
        <translation>Minimise</translation>
    </message>
    <message>
        <source>首页</source>
        <translation>Home</translation>
    </message>
    <message>
        <source>命令词</source>
        <translation>Command words</translation>
    </message>
    <message>
        <source>应用设置</source>
        <translation>App settings</translation>
    </message>
    <message>
        <source>鼠标设置</source>
        <translation>Mouse settings</translation>
    </message>
    <message>
        <source>USB接收器</source>
        <translation>USB receiver</translation>
    </message>
    <message>
        <source>蓝牙</source>
        <translation>Bluetooth</translation>
    </message>
    <message>
        <source>说话语言</source>
        <translation>Spoken language</translation>
    </message>
    <message>
        <source>按键说明</source>
        <translation>Key guide</translation>
    </message>
    <message>
        <source>按住鼠标的语音键说话，松开后文字即输入到光标处</source>
        <translation>Hold the mouse&apos;s voice key and speak; release it and the text is typed at the cursor</translation>
    </message>
    <message>
        <source>执行内容</source>
        <translation>Action</translation>
    </message>
    <message>
        <source>添加</source>
        <translation>Add</translation>
    </message>
    <message>
        <source>删除</source>
        <translation>Delete</translation>
    </message>
    <message>
        <source>删除命令词</source>
        <translation>Delete the command word</translation>
    </message>
    <message>
        <source>编辑</source>
        <translation>Edit</translation>
    </message>
    <message>
        <source>说出命令词即可打开网页、文件、文件夹、应用程序或按下快捷键</source>
        <translation>Say a command word to open a web page, file, folder or application, or to press a shortcut</translation>
    </message>
    <message>
        <source>当前状态</source>
        <translation>Current state</translation>
    </message>
    <message>
        <source>译文语言</source>
        <translation>Translation language</translation>
    </message>
    <message>
        <source>文字语言</source>
        <translation>Text language</translation>
    </message>
    <message>
        <source>3小时</source>
        <translation>3 hours</translation>
    </message>
    <message>
        <source>2.5小时</source>
        <translation>2.5 hours</translation>
    </message>
    <message>
        <source>2小时</source>
        <translation>2 hours</translation>
    </message>
    <message>
        <source>1小时</source>
        <translation>1 hour</translation>
    </message>
    <message>
        <source>不提醒</source>
        <translation>Never</translation>
    </message>
    <message>
        <source>连续工作多久后提醒休息</source>
        <translation>Remind me to take a break after working this long</translation>
    </message>
    <message>
        <source>弹窗</source>
        <translation>Popup</translation>
    </message>
    <message>
        <source>系统通知</source>
        <translation>Desktop notification</translation>
    </message>
    <message>
        <source>两者</source>
        <translation>Both</translation>
    </message>
    <message>
        <source>听写语言</source>
        <translation>Dictation language</translation>
    </message>
    <message>
        <source>语音翻译</source>
        <translation>Voice translation</translation>
    </message>
    <message>
        <source>语音翻译语言</source>
        <translation>Voice translation languages</translation>
    </message>
    <message>
        <source>划词翻译</source>
        <translation>Selection translation</translation>
    </message>
    <message>
        <source>划词翻译语言</source>
        <translation>Selection translation language</translation>
    </message>
    <message>
        <source>每日一句</source>
        <translation>Daily phrase</translation>
    </message>
    <message>
        <source>开机后显示每日一句</source>
        <translation>Show a daily phrase after login</translation>
    </message>
    <message>
        <source>更新提醒</source>
        <translation>Update reminder</translation>
    </message>
    <message>
        <source>有新版本时提醒</source>
        <translation>Tell me when a new version is out</translation>
    </message>
    <message>
        <source>开机自启动</source>
        <translation>Start at login</translation>
    </message>
    <message>
        <source>登录桌面时自动启动</source>
        <translation>Start automatically when I log in</translation>
    </message>
    <message>
        <source>休息提醒</source>
        <translation>Break reminder</translation>
    </message>
    <message>
        <source>通知方式</source>
        <translation>Notices</translation>
    </message>
    <message>
        <source>偏好设置 ›</source>
        <translation>Preferences ›</translation>
    </message>
    <message>
        <source>意见反馈</source>
        <translation>Feedback</translation>
    </message>
    <message>
        <source>语言</source>
        <translation>Language</translation>
    </message>
    <message>
        <source>通用</source>
        <translation>General</translation>
    </message>
    <message>
        <source>指针速度</source>
        <translation>Pointer speed</translation>
    </message>
    <message>
        <source>慢速</source>
        <translation>Slow</translation>
    </message>
    <message>
        <source>标准</source>
        <translation>Standard</translation>
    </message>
    <message>
        <source>快速</source>
        <translation>Fast</translation>
    </message>
    <message>
        <source>适配屏幕</source>
        <translation>Fit screen</translation>
    </message>
    <message>
        <source>灯光效果</source>
        <translation>Lighting</translation>
    </message>
    <message>
        <source>鼠标的灯光</source>
        <translation>The mouse&apos;s lights</translation>
    </message>
    <message>
        <source>振动反馈</source>
        <translation>Vibration</translation>
    </message>
    <message>
        <source>按下语音键时振动</source>
        <translation>Vibrate when the voice key is pressed</translation>
    </message>
    <message>
        <source>按键音效</source>
        <translation>Key sound</translation>
    </message>
    <message>
        <source>按下语音键时的提示音</source>
        <translation>Sound when the voice key is pressed</translation>
    </message>
    <message>
        <source>低电量提醒</source>
        <translation>Low battery reminder</translation>
    </message>
    <message>
        <source>电量低时提醒</source>
        <translation>Remind me when the battery is low</translation>
    </message>
    <message>
        <source>网页</source>
        <translation>Web page</translation>
    </message>
    <message>
        <source>文件</source>
        <translation>File</translation>
    </message>
    <message>
        <source>文件夹</source>
        <translation>Folder</translation>
    </message>
    <message>
        <source>快捷键</source>
        <translation>Shortcut</translation>
    </message>
    <message>
        <source>应用程序</source>
        <translation>Application</translation>
    </message>
    <message>
        <source>命令类型</source>
        <translation>Command type</translation>
    </message>
    <message>
        <source>浏览</source>
        <translation>Browse</translation>
    </message>
    <message>
        <source>保存</source>
        <translation>Save</translation>
    </message>
    <message>
        <source>返回</source>
        <translation>Back</translation>
    </message>
    <message>
        <source>类型</source>
        <translation>Type</translation>
    </message>
    <message>
        <source>支持单击模式</source>
        <translation>Click mode</translation>
    </message>
    <message>
        <source>单击语音键开始说话，再次单击结束</source>
        <translation>Click the voice key to start speaking, click again to stop</translation>
    </message>
    <message>
        <source>点击发送</source>
        <translation>Send on click</translation>
    </message>
    <message>
        <source>自动发送</source>
        <translation>Send automatically</translation>
    </message>
    <message>
        <source>编辑时回车键发送</source>
        <translation>Enter sends while editing</translation>
    </message>
    <message>
        <source>编辑译文原文时，回车键结束编辑并发送；关闭时回车键只结束编辑</source>
        <translation>While editing the original, Enter ends editing and sends; when off, Enter only ends editing</translation>
    </message>
    <message>
        <source>编辑时空格键发送</source>
        <translation>Space sends while editing</translation>
    </message>
    <message>
        <source>编辑译文原文时及编辑结束后，空格键发送</source>
        <translation>While and after editing the original, Space sends</translation>
    </message>
    <message>
        <source>去除标点符号</source>
        <translation>Remove punctuation</translation>
    </message>
    <message>
        <source>开启后单击语音键开始说话，再次单击结束；关闭时按住说话，松开结束</source>
        <translation>On: click the voice key to start speaking and again to stop. Off: hold to speak, release to stop</translation>
    </message>
    <message>
        <source>自动发送：翻译结果在面板关闭时直接输入；点击发送：点面板上的“发送”后输入</source>
        <translation>Send automatically: the translation is typed when the panel closes. Send on click: it is typed after you click “Send” on the panel</translation>
    </message>
    <message>
        <source>偏好设置</source>
        <translation>Preferences</translation>
    </message>
    <message>
        <source>语音键</source>
        <translation>Voice key</translation>
    </message>
    <message>
        <source>翻译结果的发送</source>
        <translation>Sending translations</translation>
    </message>
    <message>
        <source>跟随系统</source>
        <translation>Follow the system</translation>
    </message>
    <message>
        <source>界面语言</source>
        <translation>Interface language</translation>
    </message>
    <message>
        <source>窗口和菜单的语言</source>
        <translation>Language of windows and menus</translation>
    </message>
    <message>
        <source>重新启动 Zorvane 后生效</source>
        <translation>Takes effect when Zorvane restarts</translation>
    </message>
    <message>
        <source>命令词</source>
        <comment>navigation</comment>
        <translation>Commands</translation>
    </message>
    <message>
        <source>应用设置</source>
        <comment>navigation</comment>
        <translation>Settings</translation>
    </message>
    <message>
        <source>鼠标设置</source>
        <comment>navigation</comment>
        <translation>Mouse</translation>
    </message>
    <message>
        <source>关闭</source>
        <translation>Close</translation>
    </message>
    <message>
        <source>电量和设备提示的显示方式；系统通知在没有通知服务的桌面上改用弹窗</source>
        <translation>How battery and device notices are shown; a desktop without a notification service gets the popup instead</translation>
    </message>
    <message>
        <source>鼠标图片</source>
        <translation>Picture of the mouse</translation>
    </message>
    <message>
        <source>命令词列表</source>
        <translation>Command words</translation>
    </message>
    <message>
        <source>回车键编辑选中的命令词，Delete 键删除</source>
        <translation>Enter edits the selected command word, Delete deletes it</translation>
    </message>
    <message>
        <source>%1：当前状态</source>
        <translation>%1: current state</translation>
    </message>
    <message>
        <source>语音翻译：说话语言</source>
        <translation>Voice translation: spoken language</translation>
    </message>
    <message>
        <source>语音翻译：译文语言</source>
        <translation>Voice translation: translation language</translation>
    </message>
</context>
<context>
    <name>UpdateDialog</name>
    <message>
        <source>检查更新</source>
        <translation>Check for updates</translation>
    </message>
    <message>
        <source>您的Zorvane已经是最新版本!</source>
        <translation>Your Zorvane is up to date!</translation>
    </message>
    <message>
        <source>确定</source>
        <translation>OK</translation>
    </message>
    <message>
        <source>暂不更新</source>
        <translation>Not now</translation>
    </message>
    <message>
        <source>立即更新</source>
        <translation>Update now</translation>
    </message>
    <message>
        <source>正在下载更新版本...</source>
        <translation>Downloading the update...</translation>
    </message>
    <message>
        <source>取消</source>
        <translation>Cancel</translation>
    </message>
</context>
<context>
    <name>UpdatePresenter</name>
    <message>
        <source>发现新版本:</source>
        <translation>New version: </translation>
    </message>
    <message>
        <source>版本号：%1</source>
        <translation>Version: %1</translation>
    </message>
    <message>
        <source>下载的更新包已损坏，请稍后重试。</source>
        <translation>The downloaded update is damaged. Please try again later.</translation>
    </message>
    <message>
        <source>更新包已下载到 %1。
请在终端中输入以下命令安装：
%2</source>
        <translation>The update was downloaded to %1.
To install it, enter this command in a terminal:
%2</translation>
    </message>
</context>
</TS>
